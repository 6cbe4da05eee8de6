// Types without a declaration of their own.
#include "Emitter.hpp"
#include "EmitterEnums.hpp"

#include <array>

namespace zelkor::producer {

namespace za = zelkor::ast;

namespace {

constexpr std::array<za::types::FloatKind, 5> floatKinds{
    za::types::FloatKind::Half, za::types::FloatKind::Single, za::types::FloatKind::Float128,
    za::types::FloatKind::Double, za::types::FloatKind::LongDouble};

constexpr std::array<za::types::TypeOpKind, 3> operators{
    za::types::TypeOpKind::DeclType, za::types::TypeOpKind::TypeOf, za::types::TypeOpKind::UnderlyingType};

} // namespace

za::types::Type Emitter::createType(TypeFact const& fact) {
    namespace types = za::types;
    switch (fact.kind) {
    case TypeKind::Void:
        return create<types::VoidType>(fact.id);
    case TypeKind::Bool:
        return create<types::BooleanType>(fact.id);
    case TypeKind::NullPtr:
        return create<types::NullPtrType>(fact.id);
    case TypeKind::Opaque:
        return create<types::OpaqueType>(fact.id);
    case TypeKind::Integer:
        return create<types::IntegerType>(fact.id);
    case TypeKind::Float:
        return create<types::FloatType>(fact.id);
    case TypeKind::Pointer:
        return create<types::PointerType>(fact.id);
    case TypeKind::LValueReference:
        return create<types::LValueReferenceType>(fact.id);
    case TypeKind::RValueReference:
        return create<types::RValueReferenceType>(fact.id);
    case TypeKind::MemberPointer:
        return create<types::PointerToMemberType>(fact.id);
    case TypeKind::Array:
        return create<types::ArrayType>(fact.id);
    case TypeKind::Vector:
        return create<types::VectorType>(fact.id);
    case TypeKind::Qualified:
        return create<types::QualifiedType>(fact.id);
    case TypeKind::Attribute:
        return create<types::TypeAttrType>(fact.id);
    case TypeKind::TypeOperator:
        return create<types::TypeOpType>(fact.id);
    case TypeKind::Function:
        return create<types::FunctionType>(fact.id);
    }
    return {};
}

void Emitter::linkType(TypeFact const& fact, std::size_t unit) {
    namespace types = za::types;
    auto const made = find<types::Type>(fact.id);
    if (!fact.name.empty()) made.setName(fact.name);
    if (auto const based = types::BasedType::cast(made)) based.setType(type(fact.base));
    if (auto const integer = types::IntegerType::cast(made)) {
        integer.setKind(toModel(fact.integer));
        integer.setIsSigned(fact.isSigned);
        integer.setNumBits(fact.bits);
    } else if (auto const floating = types::FloatType::cast(made)) {
        floating.setKind(floatKinds[static_cast<std::size_t>(fact.floating)]);
        floating.setNumBits(fact.bits);
    } else if (auto const array = types::ArrayType::cast(made)) {
        for (std::int64_t const extent : fact.extents) {
            array.getDimensionsMutable().push_back(static_cast<std::int32_t>(extent));
        }
    } else if (auto const vector = types::VectorType::cast(made)) {
        vector.setWidth(static_cast<std::int32_t>(fact.extents.at(0)));
    } else if (auto const qualified = types::QualifiedType::cast(made)) {
        qualified.setIsConst(fact.isConst);
        qualified.setIsVolatile(fact.isVolatile);
        qualified.setIsRestrict(fact.isRestrict);
    } else if (auto const attribute = types::TypeAttrType::cast(made)) {
        for (std::string const& text : fact.attributes)
            attribute.getAttributesMutable().push_back(text);
    } else if (auto const op = types::TypeOpType::cast(made)) {
        op.setKind(operators[static_cast<std::size_t>(fact.op)]);
    } else if (auto const function = types::FunctionType::cast(made)) {
        function.setRetType(type(fact.base));
        function.setIsVariadic(fact.isVariadic);
        for (Id const& id : fact.parameters)
            function.getParamTypesMutable().add(type(id));
    }
    units_.at(unit).getSymbolsMutable().add(made);
}

za::types::Type Emitter::type(Id const& id) const {
    return find<za::types::Type>(id);
}

} // namespace zelkor::producer
