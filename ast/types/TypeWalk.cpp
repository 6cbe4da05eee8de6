#include "TypeWalk.hpp"

#include "zelkor/ast/types/BasedType.hpp"
#include "zelkor/ast/types/QualifiedType.hpp"
#include "zelkor/ast/types/Type.hpp"
#include "zelkor/ast/types/TyperefType.hpp"

namespace zelkor::ast::types {

using brant::zero::ModelElementImpl;
using brant::zero::schema::ClassTable;

namespace {

bool isQualifier(ClassTable const& table) noexcept {
    return table.conformsTo(QualifiedType::Impl::table);
}

bool isTyperef(ClassTable const& table) noexcept {
    return table.conformsTo(TyperefType::Impl::table);
}

bool isUnqualifiedTyperef(ClassTable const& table) noexcept {
    return isTyperef(table) && !isQualifier(table);
}

} // namespace

bool isBased(ClassTable const& table) noexcept {
    return table.conformsTo(BasedType::Impl::table);
}

/// A mark that follows in leaps of growing length meets the walk again if and only if the layers form a
/// circle.
ModelElementImpl* takeOff(LayerTest isLayer, ModelElementImpl* type) {
    ModelElementImpl const* mark = type;
    std::size_t steps = 0;
    std::size_t leap = 1;
    while (type != nullptr && type->valid() && isLayer(type->classTable())) {
        type = static_cast<BasedType::Impl const*>(type)->getTypeBody();
        if (type == mark) return nullptr;
        if (++steps < leap) continue;
        mark = type;
        leap *= 2;
        steps = 0;
    }
    return type;
}

Type Type::Impl::skipTypedefs(Type const& type) {
    return Type(takeOff(&isUnqualifiedTyperef, type.get()));
}

Type Type::Impl::skipQualifiers(Type const& type) {
    return Type(takeOff(&isQualifier, type.get()));
}

Type Type::Impl::skipTyperefs(Type const& type) {
    return Type(takeOff(&isTyperef, type.get()));
}

Type Type::Impl::getUnderlyingType(Type const& type) {
    return Type(takeOff(&isBased, type.get()));
}

} // namespace zelkor::ast::types
