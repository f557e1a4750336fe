#include "Optrella/Platform/Password.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

using Optrella::Platform::Password;

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

Password passwordOf(std::string_view bytes) {
    Password password;
    EXPECT_TRUE(password.append(bytes));
    return password;
}

TEST(Password, IsEmptyAtFirst) {
    const Password password;
    EXPECT_TRUE(password.empty());
    EXPECT_EQ(password.bytes(), "");
}

TEST(Password, AppendsToWhatItHolds) {
    Password password;
    EXPECT_TRUE(password.append(" a"));
    EXPECT_TRUE(password.append(""));
    EXPECT_TRUE(password.append(std::string_view("\0\xff ", 3)));
    EXPECT_FALSE(password.empty());
    EXPECT_EQ(password.bytes(), std::string_view(" a\0\xff ", 5));
}

TEST(Password, AppendsItself) {
    Password password = passwordOf("ab");
    EXPECT_TRUE(password.append(password.bytes()));
    EXPECT_EQ(password.bytes(), "abab");
}

TEST(Password, TakesAsManyBytesAsItsCapacity) {
    const std::string most(Password::capacity, 'x');
    EXPECT_EQ(passwordOf(most).bytes(), most);
}

TEST(Password, AppendsNothingOfWhatDoesNotFit) {
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

TEST(Password, HasRoomAfterItsBytes) {
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

TEST(Password, HasNoRoomWhenItIsFull) {
    Password password = passwordOf(std::string(Password::capacity, 'x'));
    EXPECT_TRUE(password.room().empty());
}

TEST(Password, MovesItsBytesAndLeavesNone) {
    Password from = passwordOf("secret");
    const char* bytes = from.bytes().data();
    const Password to = std::move(from);
    EXPECT_EQ(to.bytes(), "secret");
    EXPECT_EQ(to.bytes().data(), bytes);
    EXPECT_TRUE(from.empty());
    EXPECT_EQ(from.bytes(), "");
}

TEST(Password, CanBeUsedAfterItWasMoved) {
    Password from = passwordOf("old");
    const Password to = std::move(from);
    EXPECT_TRUE(from.append("new"));
    EXPECT_EQ(from.bytes(), "new");
    EXPECT_EQ(to.bytes(), "old");
}

TEST(Password, KeepsItsBytesWhenAssignedToItself) {
    Password password = passwordOf("same");
    Password& self = password;
    password = std::move(self);
    EXPECT_EQ(password.bytes(), "same");
}

TEST(Password, IsEmptyAndOverwrittenAfterAWipe) {
    Password password = passwordOf("secret");
    const char* memory = password.bytes().data();
    password.wipe();
    EXPECT_TRUE(password.empty());
    EXPECT_EQ(std::string_view(memory, 6), std::string_view("\0\0\0\0\0\0", 6));
    EXPECT_TRUE(password.append("new"));
    EXPECT_EQ(password.bytes(), "new");
}

TEST(Password, OverwritesOtherMemory) {
    char bytes[] = "before secret after";
    Optrella::Platform::overwrite(bytes + 7, 6);
    EXPECT_EQ(std::string_view(bytes, sizeof bytes - 1),
              std::string_view("before \0\0\0\0\0\0 after", 19));
}

}  // namespace
