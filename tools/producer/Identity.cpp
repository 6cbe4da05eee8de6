#include "Identity.hpp"

#include <nettle/sha1.h>

#include <array>
#include <charconv>
#include <initializer_list>

namespace zelkor::producer {

namespace {

// Changing this constant changes every identity that was ever imported.
constexpr Id identitySpace{
    {0x5d, 0x0e, 0x6f, 0x3a, 0x9b, 0x41, 0x4c, 0x77, 0x8e, 0x25, 0x1f, 0xd3, 0xa0, 0x6c, 0x92, 0xb8}};

std::string_view bytesOf(Id const& id) {
    return {reinterpret_cast<char const*>(id.data), id.size()};
}

// RFC 4122, version 5, of the parts one after the other. A large unit has hundreds of thousands of
// identities, so that the digest is left to a library that knows the processor's own instructions for it.
Id nameBased(std::initializer_list<std::string_view> parts) {
    sha1_ctx context;
    sha1_init(&context);
    sha1_update(&context, identitySpace.size(), identitySpace.data);
    for (std::string_view const part : parts)
        sha1_update(&context, part.size(), reinterpret_cast<std::uint8_t const*>(part.data()));
    Id id;
    sha1_digest(&context, id.size(), id.data);
    id.data[6] = static_cast<std::uint8_t>((id.data[6] & 0x0F) | 0x50);
    id.data[8] = static_cast<std::uint8_t>((id.data[8] & 0x3F) | 0x80);
    return id;
}

constexpr std::string_view separator("\0", 1);

} // namespace

Id makeId(std::string_view family, std::string_view key) {
    return nameBased({family, separator, key});
}

Id makeId(Id const& owner, std::string_view role, std::size_t ordinal) {
    std::array<char, 24> digits;
    char const* const end = std::to_chars(digits.data(), digits.data() + digits.size(), ordinal).ptr;
    // The leading NUL keeps these names apart from those of families.
    return nameBased({separator, bytesOf(owner), role, separator, {digits.data(), end}});
}

} // namespace zelkor::producer
