#include "Identity.hpp"

#include <boost/uuid/name_generator_sha1.hpp>

#include <charconv>
#include <string>

namespace zelkor::producer {

namespace {

// Changing this constant changes every identity that was ever imported.
constexpr Id identitySpace{
    {0x5d, 0x0e, 0x6f, 0x3a, 0x9b, 0x41, 0x4c, 0x77, 0x8e, 0x25, 0x1f, 0xd3, 0xa0, 0x6c, 0x92, 0xb8}};

Id nameBased(std::string const& name) {
    boost::uuids::name_generator_sha1 const generate(identitySpace);
    return generate(name);
}

} // namespace

Id makeId(std::string_view family, std::string_view key) {
    std::string name;
    name.reserve(family.size() + 1 + key.size());
    name.append(family).append(1, '\0').append(key);
    return nameBased(name);
}

Id makeId(Id const& owner, std::string_view role, std::size_t ordinal) {
    char digits[24];
    auto const end = std::to_chars(digits, digits + sizeof digits, ordinal).ptr;
    std::string name;
    name.reserve(owner.size() + role.size() + 26);
    // The leading NUL keeps these names apart from those of families.
    name.append(1, '\0').append(reinterpret_cast<char const*>(owner.data), owner.size());
    name.append(role).append(1, '\0').append(digits, end);
    return nameBased(name);
}

} // namespace zelkor::producer
