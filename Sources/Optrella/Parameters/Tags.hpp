// Tags.hpp - the texts that select a parameter on the command line.

#ifndef OPTRELLA_PARAMETERS_TAGS_HPP
#define OPTRELLA_PARAMETERS_TAGS_HPP

#include <cstddef>
#include <initializer_list>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "Optrella/Export.hpp"
#include "Optrella/Text.hpp"

namespace Optrella {

namespace Internal {

// Named where a constant parameter meets the compiler: the name is the error message.
OPTRELLA_API void constantParameterHasAtMostTwoTags() noexcept;

}  // namespace Internal

// An ordered list of texts. Up to two sit in the list itself, more on the heap.
//
// One constructor for each small number of texts and no std::initializer_list: g++ 12 takes a list
// of a class with a destructor for no constant, and a kind would then be made when the tool starts,
// in an order that nobody chose.
class OPTRELLA_API Tags {
public:
    using value_type = Text;  // what it lists

    // Lists none, or those in braces.
    constexpr Tags() noexcept : few_{} {}
    constexpr Tags(Text a) noexcept : few_{std::move(a), Text()}, size_(1) {}
    constexpr Tags(Text a, Text b) noexcept : few_{std::move(a), std::move(b)}, size_(2) {}
    constexpr Tags(const Text& a, const Text& b, const Text& c) noexcept : few_{} {
        copy({&a, &b, &c});
    }
    constexpr Tags(const Text& a, const Text& b, const Text& c, const Text& d) noexcept : few_{} {
        copy({&a, &b, &c, &d});
    }
    constexpr Tags(const Text& a, const Text& b, const Text& c, const Text& d,
                   const Text& e) noexcept
        : few_{} {
        copy({&a, &b, &c, &d, &e});
    }
    // Copies texts, as many as there are.
    Tags(std::span<const Text> tags) noexcept;
    Tags(const std::vector<Text>& tags) noexcept;

    // Copies are independent. A list that was moved from is empty.
    constexpr Tags(const Tags& other) noexcept
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

    // Return the texts, in order. Pointers are good until the list is changed or destroyed.
    [[nodiscard]] constexpr const Text* begin() const noexcept { return isMany() ? many_ : few_; }
    [[nodiscard]] constexpr const Text* end() const noexcept { return begin() + size_; }
    [[nodiscard]] constexpr Text* begin() noexcept { return isMany() ? many_ : few_; }
    [[nodiscard]] constexpr Text* end() noexcept { return begin() + size_; }
    // Return the number of texts, and whether there are none.
    [[nodiscard]] constexpr std::size_t size() const noexcept { return size_; }
    [[nodiscard]] constexpr bool empty() const noexcept { return size_ == 0; }
    // Returns one tag. STOPS the process when there is no such tag.
    [[nodiscard]] constexpr const Text& operator[](std::size_t index) const noexcept {
        if (index >= size_) Internal::fatalStop();
        return begin()[index];
    }
    // Returns the first tag. STOPS the process when there are no tags.
    [[nodiscard]] constexpr const Text& front() const noexcept { return (*this)[0]; }

    // Returns whether both list as many texts, the same ones in the same order.
    friend bool operator==(const Tags& left, const Tags& right) noexcept {
        if (left.isMany() || left.size_ != right.size_) return areSame(left, right);
        // Where there are fewer, both hold empty texts.
        return left.few_[0] == right.few_[0] && left.few_[1] == right.few_[1];
    }

private:
    static constexpr std::size_t inlineTags = 2;

    constexpr void copy(std::initializer_list<const Text*> tags) noexcept {
        if (!std::is_constant_evaluated()) {
            copyMany(tags);
        } else if (tags.size() > inlineTags) {
            Internal::constantParameterHasAtMostTwoTags();
        }
    }
    [[nodiscard]] constexpr bool isMany() const noexcept { return size_ > inlineTags; }
    static bool areSame(const Tags& left, const Tags& right) noexcept;
    void copyMany(std::initializer_list<const Text*> tags) noexcept;
    void copyMany(const Tags& other) noexcept;
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

}  // namespace Optrella

#endif
