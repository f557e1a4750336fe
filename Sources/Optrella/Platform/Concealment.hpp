// Concealment.hpp - keeps the user's other processes out of this one while it holds a password.

#ifndef OPTRELLA_PLATFORM_CONCEALMENT_HPP
#define OPTRELLA_PLATFORM_CONCEALMENT_HPP

namespace Optrella::Platform {

// As long as one lives, no other process of the same user can read this one's memory or open its
// descriptors, and no core dump of it is written; where the system cannot do that, nothing changes.
// Several may live at once, on several threads: what held before the first holds again after the
// last. What is inherited by a program that is started meanwhile is not concealed there.
class Concealment {
public:
    Concealment() noexcept;
    Concealment(const Concealment&) = delete;
    Concealment& operator=(const Concealment&) = delete;
    ~Concealment();
};

// Returns whether other processes of the user can look into this one and the system may do
// something about it.
[[nodiscard]] bool isInspectable() noexcept;
// Lets other processes of the user look into this one, or not. A failure changes nothing.
void setInspectable(bool isInspectable) noexcept;

}  // namespace Optrella::Platform

#endif
