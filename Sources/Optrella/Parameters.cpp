#include "Optrella/Parameters.hpp"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <string_view>

#include "Optrella/Internal/Lines.hpp"
#include "Optrella/Internal/Unicode.hpp"
#include "Optrella/Platform/Files.hpp"

namespace Optrella {

// ---- Tags ----

Tags::Tags(std::span<const Text> tags) : few_{} {
    if (tags.size() <= inlineTags) {
        std::copy(tags.begin(), tags.end(), few_);
    } else {
        Text* copies = new Text[tags.size()];
        std::copy(tags.begin(), tags.end(), copies);
        many_ = copies;
    }
    size_ = tags.size();
}

Tags::Tags(std::initializer_list<const Text*> tags) : few_{} {
    Text* copies = new Text[tags.size()];
    std::transform(tags.begin(), tags.end(), copies, [](const Text* tag) { return *tag; });
    many_ = copies;
    size_ = tags.size();
}

void Tags::copyMany(const Tags& other) {
    Text* copies = new Text[other.size_];
    std::copy(other.begin(), other.end(), copies);
    many_ = copies;
    size_ = other.size_;
}

void Tags::takeMany(Tags& other) noexcept {
    many_ = other.many_;
    size_ = other.size_;
    other.size_ = 0;
    std::uninitialized_default_construct_n(other.few_, inlineTags);
}

void Tags::dropMany() noexcept {
    delete[] many_;
    size_ = 0;
    std::uninitialized_default_construct_n(few_, inlineTags);
}

bool operator==(const Tags& left, const Tags& right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

// ---- Equality and hashes ----

namespace Internal {

bool isSameDeclaration(const commonDetails& left, const commonDetails& right) noexcept {
    return left.tags == right.tags && left.tagHelp == right.tagHelp &&
           left.hasParameter == right.hasParameter;
}

}  // namespace Internal

namespace {

class Hasher {
public:
    explicit Hasher(std::uint64_t seed) noexcept : state_(seed) {}

    void feed(std::uint64_t value) noexcept {
        state_ ^= value + 0x9E3779B97F4A7C15 + (state_ << 6) + (state_ >> 2);
    }
    void feed(const Text& text) noexcept { feed(std::hash<Text>()(text)); }

    // Spreads every bit of the state over all of them.
    [[nodiscard]] std::size_t finalised() const noexcept {
        std::uint64_t x = state_;
        x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
        x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
        return static_cast<std::size_t>(x ^ (x >> 31));
    }

private:
    std::uint64_t state_;
};

}  // namespace

std::size_t hashValue(const commonDetails& common, std::size_t seed) noexcept {
    Hasher hasher(seed);
    hasher.feed(common.tagHelp);
    hasher.feed(common.tags.size());
    for (const Text& tag : common.tags) hasher.feed(tag);
    hasher.feed(common.userValue);
    hasher.feed(static_cast<std::uint64_t>(common.hasParameter));
    hasher.feed(common.parameterName);
    return hasher.finalised();
}

std::size_t hashValue(const ParameterNone& flag, std::size_t seed) noexcept {
    return hashValue(flag.common, seed);
}

// ---- ParameterProtocol ----

template <>
constinit const Internal::KindOperations Internal::KindTable<ParameterNone>::operations =
    ParameterProtocol::Held<ParameterNone>::operations;
template <>
constinit const Internal::KindOperations Internal::KindTable<ParameterString>::operations =
    ParameterProtocol::Held<ParameterString>::operations;
template <>
constinit const Internal::KindOperations Internal::KindTable<ParameterUUID>::operations =
    ParameterProtocol::Held<ParameterUUID>::operations;
template <>
constinit const Internal::KindOperations Internal::KindTable<ParameterNumber>::operations =
    ParameterProtocol::Held<ParameterNumber>::operations;
template <>
constinit const Internal::KindOperations Internal::KindTable<ParameterList>::operations =
    ParameterProtocol::Held<ParameterList>::operations;
template <>
constinit const Internal::KindOperations Internal::KindTable<ParameterFileURL>::operations =
    ParameterProtocol::Held<ParameterFileURL>::operations;

void ParameterProtocol::takeFrom(ParameterProtocol& other) noexcept {
    static_assert(Held<ParameterNone>::isInline);  // it takes the place of what is moved
    if (operations_->move != nullptr) {
        common_ = operations_->move(other.storage_, storage_);
    } else {
        common_ = other.common_;
        std::memcpy(storage_, other.storage_, sizeof(void*));
        other.operations_ = &Internal::KindTable<ParameterNone>::operations;
        other.common_ = Held<ParameterNone>::make(ParameterNone(Tags(), Text()), other.storage_);
    }
}

// ---- Numbers ----

namespace {

// An optional sign and ASCII digits, nothing else, within 64 bits.
std::optional<std::int64_t> decimal(std::string_view text) noexcept {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        // Downwards for a negative number: the least one has no positive twin.
        const std::int64_t digit = isNegative ? '0' - c : c - '0';
        if (__builtin_mul_overflow(value, 10, &value)) return std::nullopt;
        if (__builtin_add_overflow(value, digit, &value)) return std::nullopt;
    }
    return value;
}

}  // namespace

std::int64_t ParameterNumber::getValue() const noexcept {
    return decimal(common.userValue).value_or(defaultValue());
}

// ---- Lists ----

namespace Internal {

void SharedObject::retain() const noexcept {
    __atomic_fetch_add(&object_->owners, 1, __ATOMIC_RELAXED);
}

void SharedObject::release() noexcept {
    if (__atomic_fetch_sub(&object_->owners, 1, __ATOMIC_ACQ_REL) == 1) {
        object_->destroy(object_);
    }
}

}  // namespace Internal

namespace {

// Stands before the options, in one block with them.
struct OptionBlock : Internal::Shared {
    std::size_t count = 0;

    [[nodiscard]] ParameterNone* options() noexcept {
        return reinterpret_cast<ParameterNone*>(this + 1);
    }
    [[nodiscard]] const ParameterNone* options() const noexcept {
        return reinterpret_cast<const ParameterNone*>(this + 1);
    }
};

void destroyOptions(Internal::Shared* shared) noexcept {
    auto* block = static_cast<OptionBlock*>(shared);
    std::destroy_n(block->options(), block->count);
    ::operator delete(block);
}

template <class Source>
OptionBlock* optionsOf(std::span<Source> sources) {
    if (sources.empty()) return nullptr;
    void* room = ::operator new(sizeof(OptionBlock) + sources.size() * sizeof(ParameterNone));
    auto* block = ::new (room) OptionBlock{{destroyOptions}, sources.size()};
    ParameterNone* place = block->options();
    for (Source& source : sources) {
        if constexpr (std::is_same_v<Source, const Text>) {
            ::new (place++) ParameterNone(source, Text());
        } else {
            ::new (place++) ParameterNone(std::move(source));
        }
    }
    return block;
}

}  // namespace

ListOptions::ListOptions(std::initializer_list<ParameterNone> options)
    : options_(optionsOf(std::span(options))) {}
ListOptions::ListOptions(std::initializer_list<Text> firstTags)
    : options_(optionsOf(std::span(firstTags))) {}
ListOptions::ListOptions(std::vector<ParameterNone> options)
    : options_(optionsOf(std::span(options))) {}

std::span<const ParameterNone> ListOptions::options() const noexcept {
    const auto* block = static_cast<const OptionBlock*>(options_.get());
    if (block == nullptr) return {};
    return {block->options(), block->count};
}

std::optional<Text> ParameterList::validate() const {
    for (const ParameterNone& option : validOptions_) {
        if (option.firstTag() == common.userValue) return std::nullopt;
    }
    Internal::Lines message;
    message.append("Item ", common.userValue, " is not a valid option. It must be one of: ");
    for (const ParameterNone& option : validOptions_) message.append(option.firstTag(), ", ");
    // Without options this takes the ": " of the fixed text: the message then ends in "one of".
    message.shorten(Internal::sizeOfLastCharacters(message, 2));
    return Text(message);
}

ParameterNone ParameterList::getValue() const {
    for (const ParameterNone& option : validOptions_) {
        if (option.firstTag() == common.userValue) return option;
    }
    Internal::fatalStop();
}

// ---- Paths ----

namespace {

// A path that holds a NUL names nothing.
bool fileExists(const Text& path) noexcept {
    return static_cast<std::string_view>(path).find('\0') == std::string_view::npos &&
           Platform::fileExists(path.c_str());
}

Text joined(const Text& path, std::string_view fault) {
    Internal::Lines message;
    message.append(path, fault);
    return message;
}

template <class Case>
std::optional<Case> caseOf(const Text& text, std::initializer_list<Case> cases) noexcept {
    for (const Case each : cases) {
        if (rawValue(each) == text) return each;
    }
    return std::nullopt;
}

}  // namespace

std::optional<Text> ParameterFileURL::validate() const {
    switch (state) {
        case existState::exist:
            if (fileExists(common.userValue)) return std::nullopt;
            return joined(common.userValue, " does not exist");
        case existState::absent:
            if (!fileExists(common.userValue)) return std::nullopt;
            return joined(common.userValue, " must not exist");
        case existState::vague:
            return std::nullopt;
    }
    Internal::fatalStop();
}

FileURL ParameterFileURL::getValue() const { return FileURL::fromPath(common.userValue); }

Text rawValue(ParameterFileURL::urlType type) noexcept {
    switch (type) {
        case ParameterFileURL::urlType::file:
            return "file";
        case ParameterFileURL::urlType::folder:
            return "folder";
        case ParameterFileURL::urlType::fileOrFolder:
            return "fileOrFolder";
    }
    Internal::fatalStop();
}

Text rawValue(ParameterFileURL::existState state) noexcept {
    switch (state) {
        case ParameterFileURL::existState::exist:
            return "exist";
        case ParameterFileURL::existState::absent:
            return "absent";
        case ParameterFileURL::existState::vague:
            return "vague";
    }
    Internal::fatalStop();
}

template <>
std::optional<ParameterFileURL::urlType> fromRawValue<ParameterFileURL::urlType>(
    const Text& text) noexcept {
    using enum ParameterFileURL::urlType;
    return caseOf(text, {file, folder, fileOrFolder});
}

template <>
std::optional<ParameterFileURL::existState> fromRawValue<ParameterFileURL::existState>(
    const Text& text) noexcept {
    using enum ParameterFileURL::existState;
    return caseOf(text, {exist, absent, vague});
}

}  // namespace Optrella
