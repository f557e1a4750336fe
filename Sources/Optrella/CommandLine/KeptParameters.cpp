#include "Optrella/CommandLine/KeptParameters.hpp"

#include <algorithm>
#include <new>

#include "Optrella/CommandLine/Action.hpp"

namespace Optrella::Internal {

namespace {

// Begins a block of the heap: what is known of the copies comes next, then the copies.
struct Copies : Shared {
    std::uint32_t count;
    std::uint32_t alignment;

    [[nodiscard]] KeptParameter* parameters() noexcept {
        return reinterpret_cast<KeptParameter*>(this + 1);
    }
};

// The places of kinds in the block, from its first byte on.
class Places {
public:
    explicit Places(std::size_t count) noexcept
        : end_(sizeof(Copies) + count * sizeof(KeptParameter)) {}

    std::size_t next(const KindOperations& kind) noexcept {
        const std::size_t begin = (end_ + kind.alignment - 1) / kind.alignment * kind.alignment;
        end_ = begin + kind.size;
        return begin;
    }
    [[nodiscard]] std::size_t end() const noexcept { return end_; }

private:
    std::size_t end_;
};

void destroyCopies(Shared* shared) noexcept {
    auto* copies = static_cast<Copies*>(shared);
    for (const KeptParameter& each : KeptList(copies->parameters(), copies->count)) {
        each.operations().destroy(const_cast<commonDetails&>(each.common()));
    }
    ::operator delete(copies, static_cast<std::align_val_t>(copies->alignment));
}

}  // namespace

void constantDeclarationTakesNamedParametersOnly() noexcept { fatalStop(); }
void constantDeclarationHoldsAtMostSixteenParameters() noexcept { fatalStop(); }
void constantDeclarationTakesAnActionWithoutCaptures() noexcept { fatalStop(); }

void KeptParameters::copy(ParameterViews required, ParameterViews optional) noexcept {
    summarise(required, optional);
    if (count_ == 0) return;
    Places places(count_);
    std::size_t alignment = alignof(Copies);
    for (const ParameterViews sources : {required, optional}) {
        for (const ParameterView& source : sources) {
            static_cast<void>(places.next(source.operations()));
            alignment = std::max(alignment, source.operations().alignment);
        }
    }
    const auto aligned = static_cast<std::align_val_t>(alignment);
    void* block = ::operator new(places.end(), aligned);
    auto* copies =
        ::new (block) Copies{{destroyCopies}, count_, static_cast<std::uint32_t>(alignment)};
    owner_ = SharedObject(copies);
    KeptParameter* copy = copies->parameters();
    copies_ = copy;
    places = Places(count_);
    for (const ParameterViews sources : {required, optional}) {
        for (const ParameterView& source : sources) {
            const KindOperations& kind = source.operations();
            void* place = static_cast<std::byte*>(block) + places.next(kind);
            ::new (copy++) KeptParameter({kind, *kind.copy(source.common(), place)});
        }
    }
}

}  // namespace Optrella::Internal
