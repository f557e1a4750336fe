#include "Optrella/Platform/Password.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

using Optrella::Platform::Password;

namespace {

bool mayNotMap = false;
bool mayNotLock = false;
// What the pages held that were given back last, and how many were given back so far.
std::string givenBack;
int timesGivenBack = 0;

}  // namespace

// The linker sends the library's calls here, and __real_... to the system.
extern "C" {

void* __real_mmap(void* address, size_t size, int access, int flags, int number, off_t offset);
int __real_munmap(void* address, size_t size);
int __real_mlock(const void* address, size_t size);

void* __wrap_mmap(void* address, size_t size, int access, int flags, int number, off_t offset) {
    if (mayNotMap) return MAP_FAILED;
    return __real_mmap(address, size, access, flags, number, offset);
}

int __wrap_munmap(void* address, size_t size) {
    givenBack.assign(static_cast<const char*>(address), size);
    ++timesGivenBack;
    return __real_munmap(address, size);
}

int __wrap_mlock(const void* address, size_t size) {
    return mayNotLock ? -1 : __real_mlock(address, size);
}

}  // extern "C"

namespace {

static_assert(!std::is_copy_constructible_v<Password>);
static_assert(!std::is_copy_assignable_v<Password>);
static_assert(std::is_nothrow_default_constructible_v<Password>);
static_assert(std::is_nothrow_move_constructible_v<Password>);
static_assert(std::is_nothrow_move_assignable_v<Password>);
static_assert(std::is_nothrow_destructible_v<Password>);
// Not by mistake: a password is never a text.
static_assert(!std::is_convertible_v<Password, std::string_view>);
static_assert(!std::is_convertible_v<Password, std::string>);
static_assert(!std::is_convertible_v<std::string, Password>);

const std::string zeros(Password::capacity, '\0');

Password passwordOf(std::string_view bytes) {
    Password password;
    EXPECT_TRUE(password.append(bytes));
    return password;
}

class PasswordTest : public testing::Test {
protected:
    void SetUp() override {
        givenBack.clear();
        timesGivenBack = 0;
    }
    void TearDown() override {
        mayNotMap = false;
        mayNotLock = false;
    }
};

TEST_F(PasswordTest, IsEmptyAtFirst) {
    const Password password;
    EXPECT_TRUE(password.empty());
    EXPECT_EQ(password.bytes(), "");
}

TEST_F(PasswordTest, TakesNoMemoryWhileItIsEmpty) {
    {
        Password password;
        EXPECT_TRUE(password.append(""));
        password.wipe();
    }
    EXPECT_EQ(timesGivenBack, 0);
}

TEST_F(PasswordTest, AppendsToWhatItHolds) {
    Password password;
    EXPECT_TRUE(password.append(" a"));
    EXPECT_TRUE(password.append(""));
    EXPECT_TRUE(password.append(std::string_view("\0\xff ", 3)));
    EXPECT_FALSE(password.empty());
    EXPECT_EQ(password.bytes(), std::string_view(" a\0\xff ", 5));
}

TEST_F(PasswordTest, AppendsItself) {
    Password password = passwordOf("ab");
    EXPECT_TRUE(password.append(password.bytes()));
    EXPECT_EQ(password.bytes(), "abab");
}

TEST_F(PasswordTest, TakesAsManyBytesAsItsCapacity) {
    const std::string most(Password::capacity, 'x');
    EXPECT_EQ(passwordOf(most).bytes(), most);
}

TEST_F(PasswordTest, AppendsNothingOfWhatDoesNotFit) {
    Password password;
    EXPECT_FALSE(password.append(std::string(Password::capacity + 1, 'x')));
    EXPECT_TRUE(password.empty());

    const std::string allButOne(Password::capacity - 1, 'x');
    EXPECT_TRUE(password.append(allButOne));
    EXPECT_FALSE(password.append("yz"));
    EXPECT_EQ(password.bytes(), allButOne);
    EXPECT_TRUE(password.append("y"));
    EXPECT_FALSE(password.append("z"));
    EXPECT_EQ(password.bytes(), allButOne + 'y');
}

TEST_F(PasswordTest, AppendsNothingWithoutMemory) {
    Password password;
    mayNotMap = true;
    EXPECT_FALSE(password.append("a"));
    EXPECT_TRUE(password.empty());
    mayNotMap = false;
    EXPECT_TRUE(password.append("b"));
    EXPECT_EQ(password.bytes(), "b");
}

TEST_F(PasswordTest, HasRoomAfterItsBytes) {
    Password password = passwordOf("ab");
    const std::span<char> room = password.room();
    EXPECT_EQ(room.data(), password.bytes().data() + 2);
    EXPECT_EQ(room.size(), Password::capacity - 2);
    std::memcpy(room.data(), "cde", 3);
    EXPECT_EQ(password.bytes(), "ab");
    password.extend(2);
    EXPECT_EQ(password.bytes(), "abcd");
    EXPECT_EQ(password.room().size(), Password::capacity - 4);
}

TEST_F(PasswordTest, HasNoRoomWhenItIsFull) {
    Password password = passwordOf(std::string(Password::capacity, 'x'));
    EXPECT_TRUE(password.room().empty());
}

TEST_F(PasswordTest, HasNoRoomWithoutMemory) {
    mayNotMap = true;
    Password password;
    EXPECT_TRUE(password.room().empty());
}

TEST_F(PasswordTest, OverwritesItsRoomAsWell) {
    {
        Password password;
        std::memcpy(password.room().data() + 100, "secret", 6);
    }
    EXPECT_EQ(timesGivenBack, 1);
    EXPECT_EQ(givenBack, zeros);
}

TEST_F(PasswordTest, AppendsWhereMemoryMayNotBeLocked) {
    mayNotLock = true;
    EXPECT_EQ(passwordOf("a").bytes(), "a");
}

TEST_F(PasswordTest, MovesItsBytesAndLeavesNone) {
    Password from = passwordOf("secret");
    const char* bytes = from.bytes().data();
    const Password to = std::move(from);
    EXPECT_EQ(to.bytes(), "secret");
    EXPECT_EQ(to.bytes().data(), bytes);
    EXPECT_TRUE(from.empty());
    EXPECT_EQ(from.bytes(), "");
    EXPECT_EQ(timesGivenBack, 0);
}

TEST_F(PasswordTest, CanBeUsedAfterItWasMoved) {
    Password from = passwordOf("old");
    const Password to = std::move(from);
    EXPECT_TRUE(from.append("new"));
    EXPECT_EQ(from.bytes(), "new");
    EXPECT_EQ(to.bytes(), "old");
}

TEST_F(PasswordTest, WipesWhatAnAssignmentReplaces) {
    Password to = passwordOf("old");
    to = passwordOf("new");
    EXPECT_EQ(to.bytes(), "new");
    EXPECT_EQ(timesGivenBack, 1);
    EXPECT_EQ(givenBack, zeros);
}

TEST_F(PasswordTest, KeepsItsBytesWhenAssignedToItself) {
    Password password = passwordOf("same");
    Password& self = password;
    password = std::move(self);
    EXPECT_EQ(password.bytes(), "same");
    EXPECT_EQ(timesGivenBack, 0);
}

TEST_F(PasswordTest, IsEmptyAndOverwrittenAfterAWipe) {
    Password password = passwordOf("secret");
    const char* memory = password.bytes().data();
    password.wipe();
    EXPECT_TRUE(password.empty());
    EXPECT_EQ(std::string_view(memory, 6), std::string_view("\0\0\0\0\0\0", 6));
    EXPECT_TRUE(password.append("new"));
    EXPECT_EQ(password.bytes(), "new");
}

TEST_F(PasswordTest, IsOverwrittenBeforeItsMemoryIsGivenBack) {
    {
        const Password password = passwordOf(std::string(Password::capacity, 'x'));
        EXPECT_EQ(timesGivenBack, 0);
    }
    EXPECT_EQ(timesGivenBack, 1);
    EXPECT_EQ(givenBack, zeros);
}

TEST_F(PasswordTest, GivesItsMemoryBackOnceAfterMoves) {
    {
        Password one = passwordOf("secret");
        Password two = std::move(one);
        const Password three = std::move(two);
    }
    EXPECT_EQ(timesGivenBack, 1);
    EXPECT_EQ(givenBack, zeros);
}

// The flags of the map that holds the address, with a space before and after each.
std::string mapFlags(const void* address) {
    std::FILE* maps = std::fopen("/proc/self/smaps", "re");
    if (maps == nullptr) return "";
    const auto wanted = reinterpret_cast<std::size_t>(address);
    bool isInside = false;
    std::string flags;
    char line[4096];
    while (flags.empty() && std::fgets(line, sizeof line, maps) != nullptr) {
        std::size_t begin = 0;
        std::size_t end = 0;
        if (std::sscanf(line, "%zx-%zx ", &begin, &end) == 2) {
            isInside = begin <= wanted && wanted < end;
        } else if (isInside && std::strncmp(line, "VmFlags:", 8) == 0) {
            flags = line + 8;
        }
    }
    std::fclose(maps);
    return flags;
}

TEST_F(PasswordTest, StaysOutOfCoreDumps) {
    const Password password = passwordOf("secret");
    const std::string flags = mapFlags(password.bytes().data());
    if (flags.empty()) GTEST_SKIP() << "no flags in /proc/self/smaps";
    EXPECT_NE(flags.find(" dd "), std::string::npos) << flags;
    const std::string ordinary(1 << 20, 'x');
    EXPECT_EQ(mapFlags(ordinary.data()).find(" dd "), std::string::npos);
}

bool isLocked(const void* address) { return mapFlags(address).find(" lo ") != std::string::npos; }

TEST_F(PasswordTest, StaysOutOfSwap) {
    // Under a sanitizer nothing is locked, though the call says so.
    void* page = ::mmap(nullptr, Password::capacity, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    const bool canLock = ::mlock(page, Password::capacity) == 0 && isLocked(page);
    ::munmap(page, Password::capacity);
    if (!canLock) GTEST_SKIP() << "memory cannot be locked here";
    const Password password = passwordOf("secret");
    EXPECT_TRUE(isLocked(password.bytes().data()));
}

TEST_F(PasswordTest, OverwritesOtherMemory) {
    char bytes[] = "before secret after";
    Optrella::Platform::overwrite(bytes + 7, 6);
    EXPECT_EQ(std::string_view(bytes, sizeof bytes - 1),
              std::string_view("before \0\0\0\0\0\0 after", 19));
}

}  // namespace
