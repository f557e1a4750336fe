#include "Optrella/Text/Unicode.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>
#include <span>
#include <vector>

namespace Optrella::Internal {

CodePoint firstCodePoint(std::string_view bytes) noexcept {
    utf8proc_int32_t value = -1;
    const auto room = static_cast<utf8proc_ssize_t>(std::min<std::size_t>(bytes.size(), 4));
    const utf8proc_ssize_t size =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(bytes.data()), room, &value);
    return size > 0 ? CodePoint{value, static_cast<std::size_t>(size)} : CodePoint{-1, 1};
}

namespace {

constexpr bool isASCII(char byte) noexcept { return static_cast<unsigned char>(byte) < 0x80; }

struct ByteRange {
    unsigned char first, last;

    [[nodiscard]] bool contains(char byte) const noexcept {
        const auto value = static_cast<unsigned char>(byte);
        return value >= first && value <= last;
    }
};

// How many bytes follow the lead byte, and from which range the first of them comes: some leads
// allow fewer, to rule out long forms, surrogates and what lies beyond U+10FFFF.
struct Continuation {
    std::size_t count;
    ByteRange second;
};
Continuation continuationOf(char lead) noexcept {
    switch (const auto byte = static_cast<unsigned char>(lead)) {
        case 0xE0:
            return {2, {0xA0, 0xBF}};
        case 0xED:
            return {2, {0x80, 0x9F}};
        case 0xF0:
            return {3, {0x90, 0xBF}};
        case 0xF4:
            return {3, {0x80, 0x8F}};
        default:
            if (byte < 0xC2 || byte > 0xF4) return {0, {}};
            return {byte < 0xE0 ? 1U : byte < 0xF0 ? 2U : 3U, {0x80, 0xBF}};
    }
}

// REQUIRES: the bytes begin with no code point.
std::size_t brokenSize(std::string_view bytes) noexcept {
    const Continuation continuation = continuationOf(bytes.front());
    ByteRange range = continuation.second;
    std::size_t size = 1;
    while (size <= continuation.count && size < bytes.size() && range.contains(bytes[size])) {
        range = {0x80, 0xBF};
        ++size;
    }
    return size;
}

}  // namespace

std::size_t firstCharacterSize(std::string_view bytes) noexcept {
    CodePoint last = firstCodePoint(bytes);
    std::size_t size = last.size;
    utf8proc_int32_t state = 0;
    while (last.isValid() && size < bytes.size()) {
        const CodePoint next = firstCodePoint(bytes.substr(size));
        if (!next.isValid()) break;
        if (utf8proc_grapheme_break_stateful(last.value, next.value, &state)) break;
        size += next.size;
        last = next;
    }
    return size;
}

namespace {

// The canonical decomposition of one code point.
struct Decomposition {
    static constexpr utf8proc_ssize_t most = 8;  // none is longer than four

    explicit Decomposition(utf8proc_int32_t codePoint) noexcept {
        constexpr auto options =
            static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE);
        int boundary = 0;
        size = utf8proc_decompose_char(codePoint, parts, most, options, &boundary);
    }

    [[nodiscard]] const utf8proc_int32_t* begin() const noexcept { return parts; }
    [[nodiscard]] const utf8proc_int32_t* end() const noexcept { return parts + size; }

    utf8proc_int32_t parts[most];
    utf8proc_ssize_t size;
};

std::size_t combiningClass(utf8proc_int32_t codePoint) noexcept {
    return static_cast<std::size_t>(utf8proc_get_property(codePoint)->combining_class);
}

// Sorts marks by their combining classes and leaves the order within a class: each is counted into
// its place. (The Unicode library exchanges neighbours, which takes minutes for an argument of a
// megabyte of marks.)
void reorder(std::span<utf8proc_int32_t> marks) {
    std::size_t places[257] = {};  // of each class; first the number of the marks in the one below
    for (const utf8proc_int32_t mark : marks) ++places[combiningClass(mark) + 1];
    std::partial_sum(std::begin(places), std::end(places), std::begin(places));
    const std::vector<utf8proc_int32_t> unordered(marks.begin(), marks.end());
    for (const utf8proc_int32_t mark : unordered) marks[places[combiningClass(mark)]++] = mark;
}

bool isMark(utf8proc_int32_t codePoint) noexcept { return combiningClass(codePoint) != 0; }

// Whether the canonical decomposition begins with a mark. That of most marks does, and that of
// three Tibetan vowels, which are none themselves.
bool beginsWithMark(utf8proc_int32_t codePoint) noexcept {
    return isMark(codePoint) || codePoint == 0x0F73 || codePoint == 0x0F75 || codePoint == 0x0F81;
}

// Whether no mark moves over its beginning. REQUIRES: not empty.
bool beginsSegment(std::string_view bytes) noexcept {
    if (isASCII(bytes.front())) return true;
    const CodePoint first = firstCodePoint(bytes);
    return !first.isValid() || !beginsWithMark(first.value);
}

bool isContinuation(char byte) noexcept { return (static_cast<unsigned char>(byte) >> 6) == 0b10; }

// Where both texts have the same bytes so far and begin a segment, at or before the first byte that
// differs. REQUIRES: both have such a byte.
std::size_t segmentBefore(std::size_t difference, std::string_view left,
                          std::string_view right) noexcept {
    std::size_t begin = difference;
    const auto isFound = [&] {
        return !isContinuation(left[begin]) && !isContinuation(right[begin]) &&
               beginsSegment(left.substr(begin)) && beginsSegment(right.substr(begin));
    };
    while (begin > 0 && !isFound()) --begin;
    return begin;
}

}  // namespace

CodePoint::Value CanonicalReader::next() noexcept {
    // Between ASCII characters there are no marks.
    if (place_ == segment_.size() && rest_.size() > 1 && isASCII(rest_[0]) && isASCII(rest_[1])) {
        const CodePoint::Value next = static_cast<unsigned char>(rest_[0]);
        rest_.remove_prefix(1);
        return next;
    }
    if (place_ == segment_.size()) readSegment();
    return segment_[place_++];
}

void CanonicalReader::readSegment() noexcept {
    segment_.clear();
    place_ = 0;
    if (rest_.empty()) segment_.push_back(end);
    while (!rest_.empty() && (segment_.empty() || !beginsSegment(rest_))) {
        if (isASCII(rest_.front())) {
            segment_.push_back(static_cast<unsigned char>(rest_.front()));
            rest_.remove_prefix(1);
            continue;
        }
        const CodePoint next = firstCodePoint(rest_);
        if (!next.isValid()) {
            segment_.push_back(broken);
            return;
        }
        const Decomposition decomposed(next.value);
        for (const CodePoint::Value part : decomposed) segment_.push_back(part);
        rest_.remove_prefix(next.size);
    }
    if (segment_.size() < 2) return;
    const auto marks = std::find_if(segment_.begin(), segment_.end(), isMark);
    if (segment_.end() - marks > 1) reorder({marks, segment_.end()});
}

namespace {

// Whether the last byte is a character of its own, as far as two bytes can tell.
bool endsInSingleByteCharacter(std::string_view bytes) noexcept {
    if (!isASCII(bytes.back())) return false;
    if (bytes.size() == 1) return true;
    const char before = bytes[bytes.size() - 2];
    return isASCII(before) && !(before == '\r' && bytes.back() == '\n');
}

std::size_t lastCharacterSize(std::string_view bytes) noexcept {
    if (endsInSingleByteCharacter(bytes)) return 1;
    // A character never reaches across a line feed, so counting may start after the last one that
    // is not itself at the end.
    const std::size_t lineFeed = bytes.substr(0, bytes.size() - 1).rfind('\n');
    if (lineFeed != std::string_view::npos) bytes.remove_prefix(lineFeed + 1);
    std::size_t size = firstCharacterSize(bytes);
    while (size < bytes.size()) {
        bytes.remove_prefix(size);
        size = firstCharacterSize(bytes);
    }
    return size;
}

}  // namespace

bool isASCII(std::string_view bytes) noexcept {
    constexpr std::uint64_t highBits = 0x8080808080808080;
    while (bytes.size() >= sizeof(std::uint64_t)) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data(), sizeof word);
        if ((word & highBits) != 0) return false;
        bytes.remove_prefix(sizeof word);
    }
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return isASCII(byte); });
}

bool isPictograph(CodePoint::Value value) noexcept {
    return utf8proc_get_property(value)->boundclass == UTF8PROC_BOUNDCLASS_EXTENDED_PICTOGRAPHIC;
}

Sequence firstSequence(std::string_view bytes) noexcept {
    const CodePoint first = firstCodePoint(bytes);
    return {first.isValid() ? first.size : brokenSize(bytes), first.isValid()};
}

bool isUTF8(std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const CodePoint next = firstCodePoint(bytes);
        if (!next.isValid()) return false;
        bytes.remove_prefix(next.size);
    }
    return true;
}

bool isCanonicallyEqual(std::string_view left, std::string_view right) noexcept {
    return CanonicalComparer().areEqual(left, right);
}

bool CanonicalComparer::areEquivalent(std::string_view left, std::string_view right) noexcept {
    const auto [l, r] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    // A longer text never equals its beginning, and an ASCII character is never part of the marks
    // before it: where both differ in one, or end in different ones, they differ. Only beyond that
    // does normalisation decide: a few other characters are equivalent to an ASCII one (U+212A to
    // K, U+037E to ;).
    if (l == left.end() || r == right.end()) return false;
    if (isASCII(*l) && isASCII(*r)) return false;
    if (left.back() != right.back() && isASCII(left.back()) && isASCII(right.back())) return false;
    const auto difference = static_cast<std::size_t>(l - left.begin());
    const std::size_t begin = segmentBefore(difference, left, right);
    left_ = left.substr(begin);
    right_ = right.substr(begin);
    for (;;) {
        const CodePoint::Value next = left_.next();
        if (next != right_.next() || next == CanonicalReader::broken) return false;
        if (next == CanonicalReader::end) return isUTF8(left.substr(0, begin));
    }
}

bool mayBeEquivalentToASCII(std::string_view bytes) noexcept {
    // Greek question mark, Greek varia, Kelvin sign: no other character is equivalent to an ASCII
    // one.
    for (const std::string_view character : {"\u037E", "\u1FEF", "\u212A"}) {
        if (bytes.find(character) != std::string_view::npos) return true;
    }
    return isASCII(bytes);
}

std::size_t canonicalHash(std::string_view bytes) noexcept {
    const std::hash<std::string_view> hash;
    if (isASCII(bytes)) return hash(bytes);
    // An ASCII text must hash alike whether it came as itself or from characters that are
    // equivalent to it, so the form is hashed as UTF-8.
    std::string canonical;
    canonical.reserve(bytes.size());
    CanonicalReader reader;
    reader = bytes;
    for (auto next = reader.next(); next != CanonicalReader::end; next = reader.next()) {
        if (next == CanonicalReader::broken) return hash(bytes);
        utf8proc_uint8_t encoded[4];
        const utf8proc_ssize_t size = utf8proc_encode_char(next, encoded);
        canonical.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(size));
    }
    return hash(canonical);
}

std::size_t sizeOfLastCharacters(std::string_view bytes, std::size_t count) noexcept {
    std::string_view rest = bytes;
    for (; count > 0 && !rest.empty(); --count) rest.remove_suffix(lastCharacterSize(rest));
    return bytes.size() - rest.size();
}

}  // namespace Optrella::Internal
