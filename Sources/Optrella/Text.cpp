#include "Optrella/Text.hpp"

#include <atomic>
#include <cstring>
#include <new>
#include <string>

#include "Optrella/Internal/Unicode.hpp"

namespace Optrella {

namespace {

// Stands before the bytes of a shared text.
struct Header {
    std::atomic<std::size_t> owners;
};

Header* headerOf(const char* bytes) noexcept {
    return reinterpret_cast<Header*>(const_cast<char*>(bytes)) - 1;
}

}  // namespace

namespace Internal {

void fatalStop() noexcept { __builtin_trap(); }
void textLiteralHoldsNUL() noexcept { fatalStop(); }

}  // namespace Internal

Text::Text(std::string_view bytes, CopyOf) {
    if (bytes.empty()) return;
    char* block = static_cast<char*>(::operator new(sizeof(Header) + bytes.size() + 1));
    ::new (block) Header{1};
    char* copy = block + sizeof(Header);
    std::memcpy(copy, bytes.data(), bytes.size());
    copy[bytes.size()] = '\0';
    bytes_ = copy;
    sizeAndFlags_ = described(bytes.size(), Internal::isASCII(bytes)) | sharedFlag;
}

void Text::retain() const noexcept {
    headerOf(bytes_)->owners.fetch_add(1, std::memory_order_relaxed);
}

void Text::release() noexcept {
    Header* header = headerOf(bytes_);
    if (header->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) ::operator delete(header);
}

std::string Text::str() const { return {bytes_, size()}; }

bool Text::equal(const Text& left, const Text& right) noexcept {
    if (left.isASCII() && right.isASCII() && left.size() != right.size()) return false;
    return Internal::isCanonicallyEqual(left, right);
}

bool Text::equal(const Text& left, std::string_view right) noexcept {
    return Internal::isCanonicallyEqual(left, right);
}

}  // namespace Optrella

std::size_t std::hash<Optrella::Text>::operator()(const Optrella::Text& text) const noexcept {
    return Optrella::Internal::canonicalHash(text);
}
