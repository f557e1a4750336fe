#include "Oracle.hpp"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/parseerr.h>
#include <unicode/rbbi.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>
#include <utf8proc.h>

#include <cstdint>

#include "Law.hpp"

namespace Tests::Oracle {

namespace {

// ICU stops silently when it cannot do what is asked; here that is a finding.
class Status {
public:
    Status() = default;
    Status(const Status&) = delete;
    Status& operator=(const Status&) = delete;
    ~Status() { law(U_SUCCESS(code_), "ICU can do what is asked"); }
    operator UErrorCode&() { return code_; }
    UErrorCode* operator&() { return &code_; }

private:
    UErrorCode code_ = U_ZERO_ERROR;
};

using Normal = const icu::Normalizer2* (*)(UErrorCode&);

std::string normalised(std::string_view text, Normal form) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    Status status;
    form(status)->normalizeUTF8(
        0, icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())), sink, nullptr,
        status);
    return result;
}

// The rules of Unicode 15.0 (UAX #29, extended grapheme clusters) over ICU's own data. ICU's ready
// iterator also joins Indic conjuncts, which became a rule of Unicode's only later.
constexpr char16_t rules[] =
    uR"(
    $CR = [\p{Grapheme_Cluster_Break=CR}];
    $LF = [\p{Grapheme_Cluster_Break=LF}];
    $Control = [\p{Grapheme_Cluster_Break=Control}];
    $Extend = [\p{Grapheme_Cluster_Break=Extend}];
    $ZWJ = [\p{Grapheme_Cluster_Break=ZWJ}];
    $Regional = [\p{Grapheme_Cluster_Break=Regional_Indicator}];
    $Prepend = [\p{Grapheme_Cluster_Break=Prepend}];
    $Spacing = [\p{Grapheme_Cluster_Break=SpacingMark}];
    $L = [\p{Grapheme_Cluster_Break=L}];
    $V = [\p{Grapheme_Cluster_Break=V}];
    $T = [\p{Grapheme_Cluster_Break=T}];
    $LV = [\p{Grapheme_Cluster_Break=LV}];
    $LVT = [\p{Grapheme_Cluster_Break=LVT}];
    $Pictograph = [:Extended_Pictographic:];
    !!chain;
    $CR $LF;
    $L ($L | $V | $LV | $LVT);
    ($LV | $V) ($V | $T);
    ($LVT | $T) $T;
    [^$Control $CR $LF] ($Extend | $ZWJ);
    [^$Control $CR $LF] $Spacing;
    $Prepend [^$Control $CR $LF];
    $Pictograph $Extend* $ZWJ $Pictograph;
    ^$Prepend* $Regional $Regional / $Regional;
    ^$Prepend* $Regional $Regional;
    .;
)";

icu::BreakIterator& breaks() {
    static icu::BreakIterator& iterator = []() -> icu::BreakIterator& {
        Status status;
        UParseError where;
        return *new icu::RuleBasedBreakIterator(rules, where, status);
    }();
    return iterator;
}

void appendCharacters(std::vector<std::string_view>& to, std::string_view text) {
    Status status;
    UText view = UTEXT_INITIALIZER;
    utext_openUTF8(&view, text.data(), static_cast<std::int64_t>(text.size()), &status);
    breaks().setText(&view, status);
    std::int32_t start = 0;
    for (std::int32_t end = breaks().next(); end != icu::BreakIterator::DONE;
         end = breaks().next()) {
        to.push_back(
            text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)));
        start = end;
    }
    utext_close(&view);
}

}  // namespace

bool knowsTheSameUnicode() {
    static const bool same = [] {
        UVersionInfo version;
        u_getUnicodeVersion(version);
        const std::string ours = std::to_string(version[0]) + "." + std::to_string(version[1]);
        return std::string_view(utf8proc_unicode_version()).starts_with(ours + ".");
    }();
    return same;
}

std::vector<Sequence> sequences(std::string_view bytes) {
    std::vector<Sequence> found;
    const auto size = static_cast<std::int32_t>(bytes.size());
    std::int32_t start = 0;
    while (start < size) {
        std::int32_t end = start;
        UChar32 codePoint = 0;
        U8_NEXT(bytes.data(), end, size, codePoint);
        found.push_back(
            {bytes.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start)),
             codePoint >= 0});
        start = end;
    }
    return found;
}

bool isUTF8(std::string_view bytes) {
    for (const Sequence& each : sequences(bytes)) {
        if (!each.isValid) return false;
    }
    return true;
}

bool holdsReserved(std::string_view bytes) {
    for (const Sequence& each : sequences(bytes)) {
        if (!each.isValid) continue;
        const auto value = static_cast<UChar32>(codePoint(each.bytes));
        if (u_charType(value) != U_UNASSIGNED) continue;
        if (u_getIntPropertyValue(value, UCHAR_GRAPHEME_CLUSTER_BREAK) != U_GCB_OTHER) return true;
        if (u_hasBinaryProperty(value, UCHAR_EXTENDED_PICTOGRAPHIC) != 0) return true;
    }
    return false;
}

std::vector<std::string_view> characters(std::string_view bytes) {
    std::vector<std::string_view> found;
    std::size_t start = 0;  // of what is UTF-8 since then
    std::size_t position = 0;
    for (const Sequence& each : sequences(bytes)) {
        if (!each.isValid) {
            appendCharacters(found, bytes.substr(start, position - start));
            for (std::size_t i = 0; i < each.bytes.size(); ++i) {
                found.push_back(each.bytes.substr(i, 1));
            }
            start = position + each.bytes.size();
        }
        position += each.bytes.size();
    }
    appendCharacters(found, bytes.substr(start));
    return found;
}

std::string decomposed(std::string_view text) {
    return normalised(text, icu::Normalizer2::getNFDInstance);
}
std::string composed(std::string_view text) {
    return normalised(text, icu::Normalizer2::getNFCInstance);
}

char32_t codePoint(std::string_view sequence) {
    UChar32 value = 0;
    std::int32_t end = 0;
    U8_NEXT(sequence.data(), end, static_cast<std::int32_t>(sequence.size()), value);
    return static_cast<char32_t>(value);
}

bool isVisible(char32_t codePoint, char32_t before) {
    const auto value = static_cast<UChar32>(codePoint);
    const auto has = [](char32_t of, UProperty property) {
        return u_hasBinaryProperty(static_cast<UChar32>(of), property) != 0;
    };
    const bool isPictured = has(before, UCHAR_EXTENDED_PICTOGRAPHIC);
    if (codePoint == 0xFE0F) return isPictured;
    if (codePoint == 0x200D) {
        return isPictured || before == 0xFE0F || has(before, UCHAR_EMOJI_MODIFIER);
    }
    switch (u_charType(value)) {
        case U_CONTROL_CHAR:
        case U_LINE_SEPARATOR:
        case U_PARAGRAPH_SEPARATOR:
            return false;
        default:
            return !has(codePoint, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) &&
                   !has(codePoint, UCHAR_NONCHARACTER_CODE_POINT);
    }
}

}  // namespace Tests::Oracle
