// Parameters.hpp - the parameter interface and the six kinds.
//
// A kind is a plain record: copy it, keep it, hand it out. A tool declares its parameters with the
// kinds' constructors and keeps them, because a value is asked for by its declaration. A parameter
// list is a std::vector<ParameterProtocol>; every element owns its own copy of a kind.
// A flag, a text, a number, a UUID or a path that is declared from literals, with up to two tags,
// is made by the compiler and costs a start of the tool nothing. No operation here prints, keeps
// state between calls, or reports by throwing.

#ifndef OPTRELLA_PARAMETERS_HPP
#define OPTRELLA_PARAMETERS_HPP

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <new>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"
#include "Optrella/Values.hpp"

namespace Optrella {

// An ordered list of texts. Up to two sit in the list itself, more on the heap.
//
// One constructor for each small number of texts and no std::initializer_list: g++ 12 takes a list
// of a class with a destructor for no constant, and a kind would then be made when the tool starts,
// in an order that nobody chose.
class OPTRELLA_API Tags {
public:
    using value_type = Text;  // what it lists

    // None, or those in braces.
    constexpr Tags() noexcept : few_{} {}
    constexpr Tags(Text a) noexcept : few_{std::move(a), Text()}, size_(1) {}
    constexpr Tags(Text a, Text b) noexcept : few_{std::move(a), std::move(b)}, size_(2) {}
    Tags(const Text& a, const Text& b, const Text& c) : Tags({&a, &b, &c}) {}
    Tags(const Text& a, const Text& b, const Text& c, const Text& d) : Tags({&a, &b, &c, &d}) {}
    Tags(const Text& a, const Text& b, const Text& c, const Text& d, const Text& e)
        : Tags({&a, &b, &c, &d, &e}) {}
    // Copied, as many as there are.
    Tags(std::span<const Text> tags);
    Tags(const std::vector<Text>& tags) : Tags(std::span(tags)) {}

    // Copies are independent. A list that was moved from is empty.
    constexpr Tags(const Tags& other)
        : few_{other.isMany() ? Text() : other.few_[0], other.isMany() ? Text() : other.few_[1]},
          size_(other.isMany() ? 0 : other.size_) {
        if (other.isMany()) copyMany(other);
    }
    constexpr Tags(Tags&& other) noexcept : few_{} { takeFrom(other); }
    constexpr Tags& operator=(Tags other) noexcept {
        if (isMany()) dropMany();
        takeFrom(other);
        return *this;
    }
    constexpr ~Tags() {
        if (isMany()) dropMany();
        for (Text& text : few_) text.~Text();
    }

    // The texts, in order. Pointers are good until the list is changed or destroyed.
    [[nodiscard]] constexpr const Text* begin() const noexcept { return isMany() ? many_ : few_; }
    [[nodiscard]] constexpr const Text* end() const noexcept { return begin() + size_; }
    [[nodiscard]] constexpr Text* begin() noexcept { return isMany() ? many_ : few_; }
    [[nodiscard]] constexpr Text* end() noexcept { return begin() + size_; }
    // The number of texts, and whether there are none.
    [[nodiscard]] constexpr std::size_t size() const noexcept { return size_; }
    [[nodiscard]] constexpr bool empty() const noexcept { return size_ == 0; }
    // STOPS the process when there is no such tag.
    [[nodiscard]] constexpr const Text& operator[](std::size_t index) const noexcept {
        if (index >= size_) Internal::fatalStop();
        return begin()[index];
    }
    // STOPS the process when there are no tags.
    [[nodiscard]] constexpr const Text& front() const noexcept { return (*this)[0]; }

    // As many texts, and the same ones in the same order.
    friend OPTRELLA_API bool operator==(const Tags& left, const Tags& right) noexcept;

private:
    static constexpr std::size_t inlineTags = 2;

    Tags(std::initializer_list<const Text*> tags);

    [[nodiscard]] constexpr bool isMany() const noexcept { return size_ > inlineTags; }
    void copyMany(const Tags& other);
    void takeMany(Tags& other) noexcept;  // REQUIRES: no texts here at all
    void dropMany() noexcept;             // leaves an empty list

    // REQUIRES: not many here.
    constexpr void takeFrom(Tags& other) noexcept {
        if (other.isMany()) {
            for (Text& text : few_) text.~Text();
            takeMany(other);
        } else {
            few_[0] = std::move(other.few_[0]);
            few_[1] = std::move(other.few_[1]);
            size_ = std::exchange(other.size_, 0);
        }
    }

    union {  // a plain array member is no constant for g++ 12 either
        Text few_[inlineTags];
        Text* many_;  // when size_ is larger
    };
    std::size_t size_ = 0;
};

// What every parameter carries as `common`.
struct OPTRELLA_API commonDetails {
    Text tagHelp = "";    // the help text
    Tags tags = {};       // what selects the parameter on the command line, the first is primary
    Text userValue = "";  // what the user gave
    bool hasParameter = true;  // whether a value follows the tag
    Text parameterName = "";   // the value's name in the help listing

    // All five fields.
    friend bool operator==(const commonDetails&, const commonDetails&) = default;
};

// A hash of all five fields. Equal records have equal hashes for the same seed.
[[nodiscard]] OPTRELLA_API std::size_t hashValue(const commonDetails& common,
                                                 std::size_t seed = 0) noexcept;

class ParameterProtocol;
template <class Kind>
struct ParameterDefaults;

namespace Internal {

// The rule behind the default isEqualTo, kind apart.
[[nodiscard]] OPTRELLA_API bool isSameDeclaration(const commonDetails& left,
                                                  const commonDetails& right) noexcept;

// Whether Kind has the name, whatever it is: so a kind that names an operation in a wrong form is
// found, and does not silently get the default one. A name that Kind has is ambiguous in the probe;
// a final kind cannot be probed, and is asked as far as a name alone can be.
struct OperationNames {
    int validate, isEqualTo, storeUserValue;
};
struct Unprobed {};
template <class Kind>
struct NameProbe : std::conditional_t<std::is_final_v<Kind>, Unprobed, Kind>, OperationNames {};
template <class Kind>
concept ShowsValidate = requires {
    &Kind::validate;
};
template <class Kind>
concept NamesValidate = ShowsValidate<Kind> || !ShowsValidate<NameProbe<Kind>>;
template <class Kind>
concept ShowsIsEqualTo = requires {
    &Kind::isEqualTo;
};
template <class Kind>
concept NamesIsEqualTo = ShowsIsEqualTo<Kind> || !ShowsIsEqualTo<NameProbe<Kind>>;
template <class Kind>
concept ShowsStoreUserValue = requires {
    &Kind::storeUserValue;
};
template <class Kind>
concept NamesStoreUserValue = ShowsStoreUserValue<Kind> || !ShowsStoreUserValue<NameProbe<Kind>>;

template <class Kind>
concept HasValidate = requires(const Kind& kind) {
    { kind.validate() } -> std::same_as<std::optional<Text>>;
};
template <class Kind>
concept HasIsEqualTo = requires(const Kind& kind, const ParameterProtocol& other) {
    { kind.isEqualTo(other) } -> std::same_as<bool>;
};
template <class Kind>
concept HasStoreUserValue = requires(Kind& kind, const Text& value) {
    { kind.storeUserValue(value) } -> std::same_as<void>;
};
template <class Kind>
concept InheritsStoreUserValue = requires {
    { &Kind::storeUserValue } -> std::same_as<void (ParameterDefaults<Kind>::*)(Text)>;
};

template <class Kind>
concept HasMemberCommon = requires(Kind& kind) {
    kind.common;
};
template <class Kind>
concept NamesCommon =
    std::is_class_v<Kind> && !std::same_as<Kind, ParameterProtocol> && HasMemberCommon<Kind>;
template <class Kind>
concept HasCommon = requires(Kind& kind) {
    { (kind.common) } -> std::same_as<commonDetails&>;
    requires std::is_member_object_pointer_v<decltype(&Kind::common)>;
};

template <class Given>
concept IsList = requires(const Given& given) {
    given.begin();
};

// A class that somebody put where a kind belongs; a list of parameters is not one.
template <class Given>
concept NoParameterKind = std::is_class_v<Given> && !std::same_as<Given, ParameterProtocol> &&
                          !NamesCommon<Given> && !IsList<Given>;

template <class Other>
Other kindOfDefaults(const ParameterDefaults<Other>&);
// Another kind's defaults would compare with that kind: such a parameter would not equal itself.
template <class Kind>
concept HasForeignDefaults = requires(const Kind& kind) {
    kindOfDefaults(kind);
    requires !std::same_as<decltype(kindOfDefaults(kind)), Kind>;
};

// What a parameter of one kind can do with the storage that holds it. There is one such object for
// each kind: its address is the kind's identity.
struct OPTRELLA_API KindOperations {
    std::optional<Text> (*validate)(const void* storage);
    bool (*isEqualTo)(const ParameterProtocol& self, const ParameterProtocol& other);
    void (*storeUserValue)(void* storage, Text&& newValue);
    // Both tell where the `common` of the new one is.
    commonDetails* (*copy)(const void* from, void* to);
    commonDetails* (*move)(void* from, void* to) noexcept;  // null when it holds but a pointer
    void (*destroy)(void* storage) noexcept;
    bool storesByDefault;
};

template <class Kind>
struct OPTRELLA_API KindTable {
    static const KindOperations operations;
};

}  // namespace Internal

// What a kind must be: a copyable class with a member `commonDetails common`. What it replaces of
// the operations below has just that form; the rest it gets by default.
//     std::optional<Text> validate() const;
//     bool isEqualTo(const ParameterProtocol& other) const;
//     void storeUserValue(Text newValue);
template <class Kind>
concept ParameterKind =
    Internal::NamesCommon<Kind> && Internal::HasCommon<Kind> && std::copy_constructible<Kind>;

// A value that owns a copy of any kind, one of the six or one of a tool's own. Small kinds sit
// inside it. Copying copies the kind; a parameter that was moved from can be assigned and
// destroyed.
class OPTRELLA_API ParameterProtocol {
public:
    // Copies or moves a parameter of any kind in. Does not compile for what is no ParameterKind.
    // Constrained by no more than a `common`: what is wrong with a kind is said by name below,
    // where a list in braces would hide it.
    template <class Given, Internal::NamesCommon Kind = std::remove_cvref_t<Given>>
    ParameterProtocol(Given&& kind);

    // What has no `common` is no parameter.
    template <class Given, Internal::NoParameterKind = std::remove_cvref_t<Given>>
    ParameterProtocol(Given&& kindWithoutCommon) = delete;

    // As the class says.
    ParameterProtocol(const ParameterProtocol& other)
        : operations_(other.operations_), common_(operations_->copy(other.storage_, storage_)) {}
    ParameterProtocol(ParameterProtocol&& other) noexcept : operations_(other.operations_) {
        takeFrom(other);
    }
    ParameterProtocol& operator=(ParameterProtocol other) noexcept {
        operations_->destroy(storage_);
        operations_ = other.operations_;
        takeFrom(other);
        return *this;
    }
    ~ParameterProtocol() { operations_->destroy(storage_); }

    // What every parameter carries: a part of the held parameter, which lives as long as it does.
    [[nodiscard]] const commonDetails& common() const noexcept { return *common_; }
    [[nodiscard]] commonDetails& common() noexcept { return *common_; }

    // Why the stored value is not acceptable, or nothing when it is. By default: nothing.
    [[nodiscard]] std::optional<Text> validate() const { return operations_->validate(storage_); }

    // Whether both stand for the same declared parameter. By default: the same kind, the same tags
    // in the same order, the same tagHelp and hasParameter; what the user gave, parameterName and a
    // kind's own fields are left out, so that a declaration equals the copy that holds a value.
    [[nodiscard]] bool isEqualTo(const ParameterProtocol& other) const {
        return operations_->isEqualTo(*this, other);
    }

    // By default: sets common().userValue, whatever the text.
    void storeUserValue(Text newValue) {
        operations_->storeUserValue(storage_, std::move(newValue));
    }

    // The primary tag. STOPS the process when there are no tags.
    [[nodiscard]] const Text& firstTag() const { return common().tags.front(); }

    // The held parameter, or null when it is of another kind.
    template <class Kind>
    [[nodiscard]] const Kind* as() const noexcept {
        return operations_ == &Internal::KindTable<Kind>::operations ? &Held<Kind>::get(storage_)
                                                                     : nullptr;
    }
    // Whether both hold a parameter of one kind, whatever it says.
    [[nodiscard]] bool isSameKindAs(const ParameterProtocol& other) const noexcept {
        return operations_ == other.operations_;
    }
    // False for a kind that replaces storeUserValue.
    [[nodiscard]] bool storesByDefault() const noexcept { return operations_->storesByDefault; }

private:
    template <class Kind>
    friend struct Internal::KindTable;
    template <class Kind>
    struct Held;

    static constexpr std::size_t inlineSize = 112;  // the largest of the six kinds

    // Takes what `other` holds; operations_ is already other's, the rest holds nothing.
    void takeFrom(ParameterProtocol& other) noexcept;

    const Internal::KindOperations* operations_;
    commonDetails* common_;                                 // within the kind
    alignas(commonDetails) std::byte storage_[inlineSize];  // the kind, or a pointer to it
};

// A parameter list: what a declaration lists, and what an action is given.
using Parameters = std::vector<ParameterProtocol>;

// The default operations as members, so that a kind can be asked without a ParameterProtocol around
// it. The six kinds have them; a tool's own kind may: struct Port : ParameterDefaults<Port> { ...
// }.
template <class Kind>
struct OPTRELLA_API ParameterDefaults {
    // As the operations of ParameterProtocol do by default. firstTag STOPS the process when there
    // are no tags.
    [[nodiscard]] std::optional<Text> validate() const { return std::nullopt; }
    [[nodiscard]] bool isEqualTo(const ParameterProtocol& other) const {
        const Kind* sameKind = other.as<Kind>();
        return sameKind != nullptr && Internal::isSameDeclaration(self().common, sameKind->common);
    }
    void storeUserValue(Text newValue) {
        static_cast<Kind&>(*this).common.userValue = std::move(newValue);
    }
    [[nodiscard]] const Text& firstTag() const { return self().common.tags.front(); }

private:
    [[nodiscard]] const Kind& self() const { return static_cast<const Kind&>(*this); }
};

// A flag: a tag that stands alone.
struct OPTRELLA_API ParameterNone final : ParameterDefaults<ParameterNone> {
    commonDetails common;  // what every parameter carries

    // hasParameter is false, and there is no parameterName. Nothing is checked.
    constexpr ParameterNone(Tags tags, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), false, Text()} {}

    // As isEqualTo: what the user gave takes no part.
    friend bool operator==(const ParameterNone& left, const ParameterNone& right) noexcept {
        return Internal::isSameDeclaration(left.common, right.common);
    }
};

// The hash of all of `common`. On purpose it does not follow ==: two flags that are equal and hold
// different user values hash differently.
[[nodiscard]] OPTRELLA_API std::size_t hashValue(const ParameterNone& flag,
                                                 std::size_t seed = 0) noexcept;

// Any text.
struct OPTRELLA_API ParameterString final : ParameterDefaults<ParameterString> {
    commonDetails common;  // what every parameter carries

    // Everything is stored as it is, unchecked.
    constexpr ParameterString(Tags tags, Text parameterName, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)} {}
};

// A UUID. Any text passes validation; one that is no UUID is fetched as the all-zero UUID.
struct OPTRELLA_API ParameterUUID final : ParameterDefaults<ParameterUUID> {
    commonDetails common;  // what every parameter carries

    // Everything is stored as it is, unchecked.
    constexpr ParameterUUID(Tags tags, Text parameterName, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)} {}
};

// A whole number of 64 bits. The bounds are declared and kept, and on purpose never tested.
struct OPTRELLA_API ParameterNumber final : ParameterDefaults<ParameterNumber> {
    commonDetails common;  // what every parameter carries

    // Everything is stored as it is, unchecked.
    constexpr ParameterNumber(Tags tags, Text parameterName, std::int64_t min, std::int64_t max,
                              Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)},
          rangeMin_(min),
          rangeMax_(max) {}

    // The bounds as they were declared: never nothing.
    [[nodiscard]] constexpr std::optional<std::int64_t> rangeMin() const noexcept {
        return rangeMin_;
    }
    [[nodiscard]] constexpr std::optional<std::int64_t> rangeMax() const noexcept {
        return rangeMax_;
    }
    // What getValue returns for a text that is no number: -1.
    [[nodiscard]] static constexpr std::int64_t defaultValue() noexcept { return -1; }

    // The number that was given, or defaultValue() for any text that is not an optional sign and
    // ASCII digits within 64 bits.
    [[nodiscard]] std::int64_t getValue() const noexcept;

private:
    std::int64_t rangeMin_;
    std::int64_t rangeMax_;
};

namespace Internal {

// What is shared begins with this.
struct Shared {
    void (*destroy)(Shared* shared) noexcept;
    std::size_t owners = 1;  // counted by SharedObject alone
};

// An object that copies share; the last of them destroys it. Copies may live on several threads.
class OPTRELLA_API SharedObject {
public:
    constexpr SharedObject() noexcept = default;
    // Owns the object; null is none.
    explicit SharedObject(Shared* object) noexcept : object_(object) {}
    SharedObject(const SharedObject& other) noexcept : object_(other.object_) {
        if (object_ != nullptr) retain();
    }
    constexpr SharedObject(SharedObject&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)) {}
    SharedObject& operator=(SharedObject other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    constexpr ~SharedObject() {
        if (object_ != nullptr) release();
    }

    // Null when it holds none.
    [[nodiscard]] constexpr Shared* get() const noexcept { return object_; }

private:
    void retain() const noexcept;
    void release() noexcept;

    Shared* object_ = nullptr;
};

}  // namespace Internal

// The choices of a list parameter, in the tool's order. Never changes; copies share it.
class OPTRELLA_API ListOptions {
public:
    using value_type = ParameterNone;  // what it lists

    // None, or copies of flags.
    constexpr ListOptions() noexcept = default;
    ListOptions(std::initializer_list<ParameterNone> options);
    ListOptions(std::vector<ParameterNone> options);
    // Choices without a help text of their own: {"name", "date"}.
    ListOptions(std::initializer_list<Text> firstTags);

    // The options, in order. Pointers are good as long as this or a copy of it lives.
    [[nodiscard]] const ParameterNone* begin() const noexcept { return options().data(); }
    [[nodiscard]] const ParameterNone* end() const noexcept { return begin() + size(); }
    // The number of options, and whether there are none.
    [[nodiscard]] std::size_t size() const noexcept { return options().size(); }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    // REQUIRES: index < size().
    [[nodiscard]] const ParameterNone& operator[](std::size_t index) const noexcept {
        return begin()[index];
    }

private:
    [[nodiscard]] std::span<const ParameterNone> options() const noexcept;

    Internal::SharedObject options_;
};

// A word out of a fixed set. An option stands for one word, its first tag; its other tags and its
// help play no part. REQUIRES: every option has a tag.
struct OPTRELLA_API ParameterList final : ParameterDefaults<ParameterList> {
    commonDetails common;  // what every parameter carries

    // Everything is stored as it is, unchecked.
    ParameterList(Tags tags, ListOptions validOptions, Text parameterName, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)},
          validOptions_(std::move(validOptions)) {}

    // The choices as they were declared.
    [[nodiscard]] const ListOptions& validOptions() const noexcept { return validOptions_; }

    // Names the stored word and all choices, or nothing when the word is a choice.
    // STOPS the process when it reaches an option without tags.
    [[nodiscard]] std::optional<Text> validate() const;
    // The first option whose first tag is the stored word.
    // STOPS the process when there is none, or at an option without tags before it.
    [[nodiscard]] ParameterNone getValue() const;

private:
    ListOptions validOptions_;
};

// A path. What it should name is declared and shown, and on purpose never tested; whether it exists
// is tested by `validate`.
struct OPTRELLA_API ParameterFileURL final : ParameterDefaults<ParameterFileURL> {
    // What the path should name. Never tested. Each case's text is its name.
    enum class OPTRELLA_API urlType : std::uint8_t {
        file,          // a file
        folder,        // a folder
        fileOrFolder,  // either
    };
    // Whether something is at the path. Each case's text is its name.
    enum class OPTRELLA_API existState : std::uint8_t {
        exist,   // must be
        absent,  // must not be
        vague,   // may be
    };

    commonDetails common;  // what every parameter carries
    urlType type;          // declared and kept
    existState state;      // what validate tests

    // Everything is stored as it is, unchecked.
    constexpr ParameterFileURL(Tags tags, urlType typeOfPath, existState stateOfPath,
                               Text parameterName, Text tagHelp) noexcept
        : common{std::move(tagHelp), std::move(tags), Text(), true, std::move(parameterName)},
          type(typeOfPath),
          state(stateOfPath) {}

    // That the path does not exist, or must not, or nothing when it is as declared. Asks the file
    // system once for `exist` and `absent`, not at all for `vague`; the path is taken exactly as it
    // was typed. STOPS the process when `state` is no case.
    [[nodiscard]] std::optional<Text> validate() const;
    // FileURL::fromPath of the stored text; tests nothing.
    [[nodiscard]] FileURL getValue() const;
};

// The text of a case: rawValue(existState::absent) == "absent". STOPS the process when the value is
// no case.
[[nodiscard]] OPTRELLA_API Text rawValue(ParameterFileURL::urlType type) noexcept;
[[nodiscard]] OPTRELLA_API Text rawValue(ParameterFileURL::existState state) noexcept;

// The case of a text, nothing when it is no case's text: fromRawValue<existState>("absent").
template <class Case>
[[nodiscard]] std::optional<Case> fromRawValue(const Text& text) noexcept = delete;
template <>
[[nodiscard]] OPTRELLA_API std::optional<ParameterFileURL::urlType>
fromRawValue<ParameterFileURL::urlType>(const Text& text) noexcept;
template <>
[[nodiscard]] OPTRELLA_API std::optional<ParameterFileURL::existState>
fromRawValue<ParameterFileURL::existState>(const Text& text) noexcept;

// ---- Nothing below is meant to be read by a tool's author. ----

template <class Kind>
struct ParameterProtocol::Held {
    static constexpr bool isInline = sizeof(Kind) <= inlineSize &&
                                     alignof(Kind) <= alignof(commonDetails) &&
                                     std::is_nothrow_move_constructible_v<Kind>;

    template <class Given>
    static commonDetails* make(Given&& kind, void* storage) {
        if constexpr (isInline) {
            return &(::new (storage) Kind(std::forward<Given>(kind)))->common;
        } else {
            auto* made = new Kind(std::forward<Given>(kind));
            ::new (storage) Kind*(made);
            return &made->common;
        }
    }
    static const Kind& get(const void* storage) noexcept {
        if constexpr (isInline) {
            return *static_cast<const Kind*>(storage);
        } else {
            return **static_cast<Kind* const*>(storage);
        }
    }
    static Kind& get(void* storage) noexcept {
        return const_cast<Kind&>(get(static_cast<const void*>(storage)));
    }

    static std::optional<Text> validate([[maybe_unused]] const void* storage) {
        if constexpr (Internal::HasValidate<Kind>) {
            return get(storage).validate();
        } else {
            return std::nullopt;
        }
    }
    static bool isEqualTo(const ParameterProtocol& self, const ParameterProtocol& other) {
        if constexpr (Internal::HasIsEqualTo<Kind>) {
            return get(self.storage_).isEqualTo(other);
        } else {
            return self.isSameKindAs(other) &&
                   Internal::isSameDeclaration(self.common(), other.common());
        }
    }
    static void storeUserValue(void* storage, Text&& newValue) {
        if constexpr (Internal::HasStoreUserValue<Kind>) {
            get(storage).storeUserValue(std::move(newValue));
        } else {
            get(storage).common.userValue = std::move(newValue);
        }
    }
    static commonDetails* copy(const void* from, void* to) { return make(get(from), to); }
    static commonDetails* move(void* from, void* to) noexcept {
        return make(std::move(get(from)), to);
    }
    static void destroy(void* storage) noexcept {
        if constexpr (isInline) {
            get(storage).~Kind();
        } else {
            delete &get(storage);
        }
    }

    static constexpr Internal::KindOperations operations{
        validate,
        isEqualTo,
        storeUserValue,
        copy,
        isInline ? &move : nullptr,
        destroy,
        !Internal::HasStoreUserValue<Kind> || Internal::InheritsStoreUserValue<Kind>};
};

template <class Kind>
constinit const Internal::KindOperations Internal::KindTable<Kind>::operations =
    ParameterProtocol::Held<Kind>::operations;

// Those of the six kinds stand in the library alone, so that a kind has one identity even where a
// tool is made of several shared objects.
template <>
OPTRELLA_API const Internal::KindOperations Internal::KindTable<ParameterNone>::operations;
template <>
OPTRELLA_API const Internal::KindOperations Internal::KindTable<ParameterString>::operations;
template <>
OPTRELLA_API const Internal::KindOperations Internal::KindTable<ParameterUUID>::operations;
template <>
OPTRELLA_API const Internal::KindOperations Internal::KindTable<ParameterNumber>::operations;
template <>
OPTRELLA_API const Internal::KindOperations Internal::KindTable<ParameterList>::operations;
template <>
OPTRELLA_API const Internal::KindOperations Internal::KindTable<ParameterFileURL>::operations;

template <class Given, Internal::NamesCommon Kind>
ParameterProtocol::ParameterProtocol(Given&& kind)
    : operations_(&Internal::KindTable<Kind>::operations) {
    static_assert(ParameterKind<Kind>,
                  "a kind must be a copyable class with a member `commonDetails common`");
    static_assert(!Internal::NamesValidate<Kind> || Internal::HasValidate<Kind>,
                  "a kind's validate must be: std::optional<Text> validate() const");
    static_assert(
        !Internal::NamesIsEqualTo<Kind> || Internal::HasIsEqualTo<Kind>,
        "a kind's isEqualTo must be: bool isEqualTo(const ParameterProtocol& other) const");
    static_assert(!Internal::NamesStoreUserValue<Kind> || Internal::HasStoreUserValue<Kind>,
                  "a kind's storeUserValue must be: void storeUserValue(Text newValue)");
    static_assert(!std::is_polymorphic_v<Kind>,
                  "a kind must be a plain record: what derives from it would be cut off");
    static_assert(!Internal::HasForeignDefaults<Kind>,
                  "a kind that inherits ParameterDefaults must name itself: "
                  "struct Kind : ParameterDefaults<Kind>");
    common_ = Held<Kind>::make(std::forward<Given>(kind), storage_);
}

}  // namespace Optrella

template <>
struct OPTRELLA_API std::hash<Optrella::commonDetails> {
    std::size_t operator()(const Optrella::commonDetails& common) const noexcept {
        return Optrella::hashValue(common);
    }
};
template <>
struct OPTRELLA_API std::hash<Optrella::ParameterNone> {
    std::size_t operator()(const Optrella::ParameterNone& flag) const noexcept {
        return Optrella::hashValue(flag);
    }
};

#endif
