// The memory that passwords stand in: taken and given back by calls that the linker sends here, and
// as /proc shows it.

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "Optrella/Platform/Password.hpp"

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

const std::string zeros(Password::capacity, '\0');

Password passwordOf(std::string_view bytes) {
    Password password;
    EXPECT_TRUE(password.append(bytes));
    return password;
}

class PasswordMemory : public testing::Test {
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

TEST_F(PasswordMemory, IsNotTakenForAnEmptyPassword) {
    {
        Password password;
        EXPECT_TRUE(password.append(""));
        password.wipe();
    }
    EXPECT_EQ(timesGivenBack, 0);
}

TEST_F(PasswordMemory, MayBeMissingForBytes) {
    Password password;
    mayNotMap = true;
    EXPECT_FALSE(password.append("a"));
    EXPECT_TRUE(password.empty());
    mayNotMap = false;
    EXPECT_TRUE(password.append("b"));
    EXPECT_EQ(password.bytes(), "b");
}

TEST_F(PasswordMemory, MayBeMissingForRoom) {
    mayNotMap = true;
    Password password;
    EXPECT_TRUE(password.room().empty());
}

TEST_F(PasswordMemory, IsOverwrittenWhereItIsRoomToo) {
    {
        Password password;
        std::memcpy(password.room().data() + 100, "secret", 6);
    }
    EXPECT_EQ(timesGivenBack, 1);
    EXPECT_EQ(givenBack, zeros);
}

TEST_F(PasswordMemory, NeedNotBeLocked) {
    mayNotLock = true;
    EXPECT_EQ(passwordOf("a").bytes(), "a");
}

TEST_F(PasswordMemory, IsWipedWhenAnAssignmentReplacesIt) {
    Password to = passwordOf("old");
    to = passwordOf("new");
    EXPECT_EQ(to.bytes(), "new");
    EXPECT_EQ(timesGivenBack, 1);
    EXPECT_EQ(givenBack, zeros);
}

TEST_F(PasswordMemory, IsOverwrittenBeforeItIsGivenBack) {
    {
        const Password password = passwordOf(std::string(Password::capacity, 'x'));
        EXPECT_EQ(timesGivenBack, 0);
    }
    EXPECT_EQ(timesGivenBack, 1);
    EXPECT_EQ(givenBack, zeros);
}

TEST_F(PasswordMemory, IsGivenBackOnceAfterMoves) {
    {
        Password one = passwordOf("secret");
        Password two = std::move(one);
        Password three = std::move(two);
        Password& self = three;
        three = std::move(self);
        EXPECT_EQ(timesGivenBack, 0);
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

TEST_F(PasswordMemory, StaysOutOfCoreDumps) {
    const Password password = passwordOf("secret");
    const std::string flags = mapFlags(password.bytes().data());
    if (flags.empty()) GTEST_SKIP() << "no flags in /proc/self/smaps";
    EXPECT_NE(flags.find(" dd "), std::string::npos) << flags;
    const std::string ordinary(1 << 20, 'x');
    EXPECT_EQ(mapFlags(ordinary.data()).find(" dd "), std::string::npos);
}

bool isLocked(const void* address) { return mapFlags(address).find(" lo ") != std::string::npos; }

TEST_F(PasswordMemory, StaysOutOfSwap) {
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

}  // namespace
