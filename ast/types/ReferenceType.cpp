#include "zelkor/ast/types/ReferenceType.hpp"

#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/types/LValueReferenceType.hpp"
#include "zelkor/ast/types/RValueReferenceType.hpp"

namespace zelkor::ast::types {

bool ReferenceType::Impl::isLValueReferenceType() const {
    return brant::zero::isA<LValueReferenceType>(*this);
}

bool ReferenceType::Impl::isRValueReferenceType() const {
    return brant::zero::isA<RValueReferenceType>(*this);
}

} // namespace zelkor::ast::types
