// What the conversation answers PAM, message by message. Linked with the heap's functions wrapped.

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Optrella/Platform/Linux/Pam.hpp"

using namespace Optrella::Platform;

namespace {

constexpr int promptWithEcho = 2;
constexpr int radioPrompt = 5;
constexpr int binaryPrompt = 7;

// What the code under test does with the heap while a test watches it.
struct Heap {
    bool isWatched = false;
    int callsUntilFailure = INT_MAX;
    int calls = 0;
    std::vector<void*> live;
    std::string freed;  // the content of all blocks, as it was when they were freed
};
Heap heap;

bool mayAllocate() {
    if (!heap.isWatched) return true;
    ++heap.calls;
    return heap.callsUntilFailure-- > 0;
}

void* noted(void* memory) {
    if (heap.isWatched && memory != nullptr) heap.live.push_back(memory);
    return memory;
}

}  // namespace

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* memory);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void __wrap_free(void* memory);

void* __wrap_malloc(std::size_t size) {
    return mayAllocate() ? noted(__real_malloc(size)) : nullptr;
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return mayAllocate() ? noted(__real_calloc(count, size)) : nullptr;
}
void __wrap_free(void* memory) {
    if (heap.isWatched && memory != nullptr) {
        heap.freed.append(static_cast<const char*>(memory), ::malloc_usable_size(memory));
        std::erase(heap.live, memory);
    }
    __real_free(memory);
}

}  // extern "C"

namespace {

using Styles = std::vector<int>;

class Conversation : public testing::Test {
protected:
    struct Answers {
        int status = -1;
        std::size_t count = 0;
        Pam::Response* responses = nullptr;

        Answers() = default;
        Answers(Answers&& other) noexcept
            : status(other.status),
              count(other.count),
              responses(std::exchange(other.responses, nullptr)) {}
        Answers& operator=(Answers&&) = delete;
        ~Answers() {
            for (std::size_t i = 0; responses != nullptr && i < count; ++i) {
                std::free(responses[i].text);
            }
            std::free(responses);
        }
    };

    void SetUp() override { heap = Heap(); }
    void TearDown() override { heap.isWatched = false; }

    Answers ask(const Styles& styles) { return ask(attempt, styles); }

    static Answers ask(Pam::Attempt& attempt, const Styles& styles) {
        std::vector<Pam::Message> messages;
        for (const int style : styles) messages.push_back({style, "Password: "});
        std::vector<const Pam::Message*> pointers;
        for (const Pam::Message& message : messages) pointers.push_back(&message);
        return ask(attempt, static_cast<int>(styles.size()), pointers.data());
    }

    static Answers ask(Pam::Attempt& attempt, int count, const Pam::Message** messages) {
        static Pam::Response notNull;
        Answers answers;
        answers.responses = &notNull;
        heap.isWatched = true;
        answers.status = Pam::converse(count, messages, &answers.responses, &attempt);
        heap.isWatched = false;
        answers.count = static_cast<std::size_t>(std::max(count, 0));
        return answers;
    }

    // The texts, "-" for none.
    static std::vector<std::string> texts(const Answers& answers) {
        std::vector<std::string> found;
        for (std::size_t i = 0; i < answers.count; ++i) {
            const char* text = answers.responses[i].text;
            found.push_back(text == nullptr ? "-" : text);
        }
        return found;
    }

    void expectRefused(const Styles& styles) {
        const bool wasAnswered = attempt.isAnswered;
        const Answers answers = ask(styles);
        EXPECT_EQ(answers.status, Pam::conversationError);
        EXPECT_EQ(answers.responses, nullptr);
        EXPECT_EQ(attempt.isAnswered, wasAnswered);
        expectNothingLeft();
    }

    void expectNothingLeft() {
        EXPECT_TRUE(heap.live.empty());
        EXPECT_EQ(heap.freed.find(attempt.password), std::string::npos);
    }

    Pam::Attempt attempt{"right password"};
};

using Texts = std::vector<std::string>;

TEST_F(Conversation, AnswersThePromptWithoutEchoWithThePassword) {
    const Answers answers = ask({Pam::promptWithoutEcho});
    EXPECT_EQ(answers.status, Pam::success);
    EXPECT_EQ(texts(answers), Texts{"right password"});
    EXPECT_EQ(answers.responses[0].unused, 0);
    EXPECT_TRUE(attempt.isAnswered);
}

TEST_F(Conversation, AnswersWithACopyThatBelongsToPam) {
    const Answers answers = ask({Pam::promptWithoutEcho});
    EXPECT_NE(answers.responses[0].text, attempt.password.data());
    EXPECT_EQ(heap.live, (std::vector<void*>{answers.responses, answers.responses[0].text}));
}

TEST_F(Conversation, KeepsEveryByteOfThePassword) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) bytes += static_cast<char>(byte);
    attempt.password = bytes;
    EXPECT_EQ(texts(ask({Pam::promptWithoutEcho})), Texts{bytes});
}

TEST_F(Conversation, TakesNoMoreThanThePasswordFromWhereItStands) {
    attempt.password = std::string_view("right password").substr(0, 5);
    EXPECT_EQ(texts(ask({Pam::promptWithoutEcho})), Texts{"right"});
}

TEST_F(Conversation, AnswersWithTheEmptyPassword) {
    attempt.password = {};
    EXPECT_EQ(texts(ask({Pam::promptWithoutEcho})), Texts{""});
    EXPECT_TRUE(attempt.isAnswered);
}

TEST_F(Conversation, AnswersWithTheLongestPassword) {
    const std::string longest(Pam::responseSize - 1, 'x');
    attempt.password = longest;
    EXPECT_EQ(texts(ask({Pam::promptWithoutEcho})), Texts{longest});
}

TEST_F(Conversation, RefusesStylesThatItDoesNotKnow) {
    for (const int style : {0, radioPrompt, 6, binaryPrompt, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(style);
        expectRefused({style});
    }
}

TEST_F(Conversation, NeverCopiesThePasswordForWhatItRefuses) {
    expectRefused({Pam::promptWithoutEcho, promptWithEcho});
    EXPECT_EQ(heap.calls, 0);
}

// Every sequence of up to five messages, against the rule in one line.
TEST_F(Conversation, AnswersExactlyWhatHasOnePromptAndTexts) {
    constexpr int styles[] = {Pam::promptWithoutEcho, promptWithEcho, Pam::errorText,
                              Pam::informationText,   radioPrompt,    binaryPrompt};
    int sequences = 0;
    for (std::size_t length = 1, count = 6; length <= 5; ++length, count *= 6) {
        for (std::size_t number = 0; number < count; ++number) {
            Styles sequence;
            for (std::size_t i = 0, rest = number; i < length; ++i, rest /= 6) {
                sequence.push_back(styles[rest % 6]);
            }
            const auto times = [&sequence](int style) {
                return std::count(sequence.begin(), sequence.end(), style);
            };
            for (const bool wasAnswered : {false, true}) {
                const auto prompts = times(Pam::promptWithoutEcho);
                const bool isFine =
                    prompts + wasAnswered <= 1 &&
                    times(promptWithEcho) + times(radioPrompt) + times(binaryPrompt) == 0;
                Pam::Attempt one{"right password", wasAnswered};
                heap = Heap();
                const Answers answers = ask(one, sequence);
                ASSERT_EQ(answers.status, isFine ? Pam::success : Pam::conversationError);
                ASSERT_EQ(answers.responses != nullptr, isFine);
                if (!isFine) expectNothingLeft();
                ASSERT_EQ(one.isAnswered, wasAnswered || (isFine && prompts == 1));
                for (std::size_t i = 0; isFine && i < length; ++i) {
                    const bool isPrompt = sequence[i] == Pam::promptWithoutEcho;
                    ASSERT_EQ(texts(answers)[i], isPrompt ? "right password" : "-");
                }
                ++sequences;
            }
        }
    }
    EXPECT_EQ(sequences, 2 * (6 + 36 + 216 + 1296 + 7776));
}

TEST_F(Conversation, TakesAsManyMessagesAsPamAllows) {
    Styles styles(32, Pam::informationText);
    styles.back() = Pam::promptWithoutEcho;
    const Answers answers = ask(styles);
    EXPECT_EQ(answers.status, Pam::success);
    Texts expected(31, "-");
    expected.push_back("right password");
    EXPECT_EQ(texts(answers), expected);
}

TEST_F(Conversation, RefusesMoreMessagesThanPamAllows) {
    Styles styles(33, Pam::informationText);
    styles.front() = Pam::promptWithoutEcho;
    expectRefused(styles);
    expectRefused(Styles(33, Pam::informationText));
}

TEST_F(Conversation, RefusesImpossibleCountsWithoutALookAtTheMessages) {
    for (const int count : {0, -1, 33, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(count);
        const Answers answers = ask(attempt, count, nullptr);
        EXPECT_EQ(answers.status, Pam::conversationError);
        EXPECT_EQ(answers.responses, nullptr);
        EXPECT_FALSE(attempt.isAnswered);
        EXPECT_EQ(heap.calls, 0);
    }
}

TEST_F(Conversation, LeavesNothingWhereMemoryRunsOut) {
    for (const int successes : {0, 1}) {
        SCOPED_TRACE(successes);
        heap.callsUntilFailure = successes;
        const Answers answers = ask({Pam::informationText, Pam::promptWithoutEcho});
        EXPECT_EQ(answers.status, Pam::bufferError);
        EXPECT_EQ(answers.responses, nullptr);
        EXPECT_FALSE(attempt.isAnswered);
        expectNothingLeft();
    }
    heap.callsUntilFailure = 2;
    EXPECT_EQ(ask({Pam::informationText, Pam::promptWithoutEcho}).status, Pam::success);
}

}  // namespace
