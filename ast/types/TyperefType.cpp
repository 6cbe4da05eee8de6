#include "zelkor/ast/types/TyperefType.hpp"

#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/types/TypeAttrType.hpp"
#include "zelkor/ast/types/TypeOpType.hpp"
#include "zelkor/ast/types/TypedefType.hpp"

namespace zelkor::ast::types {

bool TyperefType::Impl::isTypedefType() const {
    return brant::zero::isA<TypedefType>(*this);
}

bool TyperefType::Impl::isTypeAttrType() const {
    return brant::zero::isA<TypeAttrType>(*this);
}

bool TyperefType::Impl::isTypeOpType() const {
    return brant::zero::isA<TypeOpType>(*this);
}

} // namespace zelkor::ast::types
