#include "Optrella/Parameters/Tags.hpp"

#include <algorithm>
#include <memory>

namespace Optrella {

Tags::Tags(std::span<const Text> tags) noexcept : few_{} {
    if (tags.size() <= inlineTags) {
        std::copy(tags.begin(), tags.end(), few_);
    } else {
        Text* copies = new Text[tags.size()];
        std::copy(tags.begin(), tags.end(), copies);
        many_ = copies;
    }
    size_ = tags.size();
}

Tags::Tags(const std::vector<Text>& tags) noexcept : Tags(std::span(tags)) {}

void Internal::constantParameterHasAtMostTwoTags() noexcept { fatalStop(); }

void Tags::copyMany(std::initializer_list<const Text*> tags) noexcept {
    Text* copies = new Text[tags.size()];
    std::transform(tags.begin(), tags.end(), copies, [](const Text* tag) { return *tag; });
    many_ = copies;
    size_ = tags.size();
}

void Tags::copyMany(const Tags& other) noexcept {
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

bool Tags::areSame(const Tags& left, const Tags& right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

}  // namespace Optrella
