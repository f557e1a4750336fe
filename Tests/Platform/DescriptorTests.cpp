#include "Optrella/Platform/Descriptor.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <utility>

namespace {

using Optrella::Platform::Descriptor;

int opened() { return ::open("/dev/null", O_RDONLY | O_CLOEXEC); }

bool isOpen(int number) { return ::fcntl(number, F_GETFD) >= 0; }

TEST(ADescriptor, IsOpenUntilItsOwnerEnds) {
    int number = -1;
    {
        const Descriptor owner(opened());
        number = owner.number();
        EXPECT_TRUE(owner.isOpen());
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(ADescriptor, ThatIsClosedIsNoLongerItsOwners) {
    Descriptor owner(opened());
    const int number = owner.number();
    owner.close();
    EXPECT_FALSE(owner.isOpen());
    EXPECT_FALSE(isOpen(number));

    // The system gives the number to the next who asks.
    const Descriptor next(opened());
    ASSERT_EQ(next.number(), number);
    owner.close();
    EXPECT_TRUE(isOpen(number));
}

TEST(ADescriptor, BelongsToWhomItWasMovedTo) {
    Descriptor first(opened());
    const int number = first.number();
    {
        const Descriptor second(std::move(first));
        EXPECT_FALSE(first.isOpen());
        EXPECT_EQ(second.number(), number);
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(ADescriptor, IsClosedByTheOwnerItWasExchangedWith) {
    Descriptor first(opened());
    const int number = first.number();
    {
        Descriptor second(opened());
        first = std::move(second);
        EXPECT_EQ(second.number(), number);
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
    EXPECT_TRUE(isOpen(first.number()));
}

}  // namespace
