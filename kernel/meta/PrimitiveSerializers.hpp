#pragma once

#include "brant/zero/meta/PropertySerializer.hpp"

namespace brant::zero::meta::internal {

/// \returns the serializer of a primitive, null for any other type.
[[nodiscard]] PropertySerializer const* primitiveSerializer(Type const& type);

} // namespace brant::zero::meta::internal
