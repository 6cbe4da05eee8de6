/// \file
/// Walking all features of an element by reflection without making a `Value` of each.
#pragma once

#include "brant/zero/Core.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"

namespace brant::zero {

/// The number of an enumeration feature; `row.enumeration` names it.
struct EnumerationNumber {
    std::int32_t value;
};

/// Calls `visitor(row, value)` for each stored feature of the element, in index order. `value` is, by the
/// row's kind: the field itself (`bool`, `std::int32_t`, `std::uint32_t`, `std::int64_t`, `std::uint64_t`,
/// `double`, `std::string`, `std::u16string`), an `EnumerationNumber`, a `ModelElementImpl*` (null, dead and
/// placeholders as they stand; container ends too), a `ReferenceSequence const&`, an
/// `AbstractPrimitiveCollection const&`, or for a keyed collection a `ReferenceCollection const&`. Nothing is
/// resolved or changed. The visitor must not change the element.
template <class Visitor>
void visitFeatures(ModelElementImpl const& element, Visitor&& visitor) {
    schema::ClassTable const& table = element.classTable();
    for (std::size_t i = 1; i < table.count; ++i) {
        schema::PropertyRow const& row = *table.stored[i];
        switch (row.kind) {
        case schema::PropertyKind::Attribute:
            switch (row.valueKind) {
            case schema::ValueKind::Boolean:
                visitor(row, Core::field<bool>(element, row));
                break;
            case schema::ValueKind::Integer:
                visitor(row, Core::field<std::int32_t>(element, row));
                break;
            case schema::ValueKind::UnlimitedNatural:
                visitor(row, Core::field<std::uint32_t>(element, row));
                break;
            case schema::ValueKind::Integer64:
                visitor(row, Core::field<std::int64_t>(element, row));
                break;
            case schema::ValueKind::UInteger64:
                visitor(row, Core::field<std::uint64_t>(element, row));
                break;
            case schema::ValueKind::Real:
                visitor(row, Core::field<double>(element, row));
                break;
            case schema::ValueKind::StdString:
                visitor(row, Core::field<std::string>(element, row));
                break;
            case schema::ValueKind::String:
                visitor(row, Core::field<std::u16string>(element, row));
                break;
            default:
                visitor(row, EnumerationNumber{Core::field<std::int32_t>(element, row)});
            }
            break;
        case schema::PropertyKind::Reference:
            visitor(row, Core::field<ModelElementImpl*>(element, row));
            break;
        case schema::PropertyKind::ContainerEnd:
            visitor(row, Core::readContainerEnd(element, row));
            break;
        case schema::PropertyKind::ManyReference:
            visitor(row, Core::sequence(element, row));
            break;
        case schema::PropertyKind::ManyAttribute:
            visitor(row, static_cast<AbstractPrimitiveCollection const&>(Core::collection(element, row)));
            break;
        case schema::PropertyKind::Map:
            visitor(row, static_cast<ReferenceCollection const&>(Core::collection(element, row)));
            break;
        default:
            break;
        }
    }
}

} // namespace brant::zero
