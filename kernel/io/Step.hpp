// How a stored property is written and read.
#pragma once

#include "brant/zero/Schema.hpp"

#include <cstdint>

namespace brant::zero::io {

/// In this order: single values, single references, lists without children, children.
enum class Step : std::uint8_t {
    Boolean,
    Integer,
    Natural,
    Integer64,
    Natural64,
    Real,
    String,
    StdString,
    Enumeration,
    Reference,
    IntegerList,
    StringList,
    StdStringList,
    ReferenceList,
    Child,
    ChildList,
    ChildMap
};

[[nodiscard]] Step stepOf(schema::PropertyRow const& row) noexcept;

/// \returns whether texts have the property: container ends follow from the nesting, what has no index is
/// computed.
[[nodiscard]] inline bool isText(schema::PropertyRow const& row) noexcept {
    return row.stored() && row.kind != schema::PropertyKind::ContainerEnd &&
           row.valueKind != schema::ValueKind::Datatype;
}

[[nodiscard]] inline bool isMany(Step step) noexcept {
    return step >= Step::IntegerList && step != Step::Child;
}

} // namespace brant::zero::io
