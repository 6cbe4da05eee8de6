#include "zelkor/ast/codeinsight/TypeInfo.hpp"

#include "Positions.hpp"
#include "zelkor/ast/types/AggregateType.hpp"

namespace zelkor::ast::codeinsight {

bool TypeInfo::Impl::getIsDefined() const {
    auto const* const type = brant::zero::aliveAs<types::Type>(getTypeBody());
    if (type == nullptr || definitionOf(*type) == nullptr) return false;
    return !brant::zero::isA<types::AggregateType>(*type) ||
           !static_cast<types::AggregateType::Impl const*>(type)->getIsIncomplete();
}

bool TypeInfo::Impl::getIsDefinedInHeader() const {
    return getIsDefined() && getIsDeclared();
}

/// Of a type the definition position alone tells, complete or not.
bool TypeInfo::Impl::getIsDeclared() const {
    auto const* const type = brant::zero::aliveAs<types::Type>(getTypeBody());
    return type != nullptr && definedInHeader(*type);
}

bool TypeInfo::Impl::getIsDeclaredInHeader() const {
    return getIsDeclared();
}

} // namespace zelkor::ast::codeinsight
