// Identities that depend on nothing but the content they name.
#pragma once

#include <boost/uuid/uuid.hpp>

#include <tsl/robin_map.h>
#include <tsl/robin_set.h>

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zelkor::producer {

using Id = boost::uuids::uuid;

// An identity is a digest already, so that some of its bytes are as good a hash as any.
struct IdHash {
    std::size_t operator()(Id const& id) const noexcept {
        std::size_t hash;
        std::memcpy(&hash, id.data, sizeof hash);
        return hash;
    }
};

// Tables by identity. What points into them is valid until something is added.
template <class Value>
using IdMap = tsl::robin_map<Id, Value, IdHash>;
using IdSet = tsl::robin_set<Id, IdHash>;

// Version 5 UUID of a key within a family; equal arguments give equal identities in every process.
Id makeId(std::string_view family, std::string_view key);

// Identity of a part that has no key but its place in its owner.
Id makeId(Id const& owner, std::string_view role, std::size_t ordinal = 0);

} // namespace zelkor::producer
