/// \file
/// The walks down a type, on bodies.
#pragma once

#include "brant/zero/ModelElement.hpp"

namespace zelkor::ast::types {

/// Says of the class of a based type whether a walk takes the layer off.
using LayerTest = bool (*)(brant::zero::schema::ClassTable const&) noexcept;

/// \returns the first type that is no such layer: null below a layer without a base, and for layers that lead
/// back into themselves; a dead one as it stands. Linear in the number of layers, no memory. \requires the
/// test to hold for subclasses of `BasedType` only.
[[nodiscard]] brant::zero::ModelElementImpl* takeOff(LayerTest isLayer, brant::zero::ModelElementImpl* type);

/// The test of `getUnderlyingType`.
[[nodiscard]] bool isBased(brant::zero::schema::ClassTable const& table) noexcept;

} // namespace zelkor::ast::types
