#include "Step.hpp"

namespace brant::zero::io {

using schema::PropertyKind;
using schema::PropertyRow;
using schema::ValueKind;

namespace {

Step scalarStep(ValueKind kind) noexcept {
    switch (kind) {
    case ValueKind::Boolean:
        return Step::Boolean;
    case ValueKind::Integer:
        return Step::Integer;
    case ValueKind::UnlimitedNatural:
        return Step::Natural;
    case ValueKind::Integer64:
        return Step::Integer64;
    case ValueKind::UInteger64:
        return Step::Natural64;
    case ValueKind::Real:
        return Step::Real;
    case ValueKind::String:
        return Step::String;
    case ValueKind::StdString:
        return Step::StdString;
    default:
        return Step::Enumeration;
    }
}

Step listStep(ValueKind kind) noexcept {
    if (kind == ValueKind::String) return Step::StringList;
    return kind == ValueKind::StdString ? Step::StdStringList : Step::IntegerList;
}

} // namespace

Step stepOf(PropertyRow const& row) noexcept {
    switch (row.kind) {
    case PropertyKind::Attribute:
        return scalarStep(row.valueKind);
    case PropertyKind::ManyAttribute:
        return listStep(row.valueKind);
    case PropertyKind::Reference:
        return row.owning() ? Step::Child : Step::Reference;
    case PropertyKind::Map:
        return Step::ChildMap;
    default:
        return row.owning() ? Step::ChildList : Step::ReferenceList;
    }
}

} // namespace brant::zero::io
