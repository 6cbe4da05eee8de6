#include "zelkor/ast/codeinsight/VariableInfo.hpp"

#include "Positions.hpp"
#include "zelkor/ast/Variable.hpp"

namespace zelkor::ast::codeinsight {

bool VariableInfo::Impl::getIsDefined() const {
    auto const* const variable = brant::zero::aliveAs<Variable>(getVariableBody());
    return variable != nullptr && definitionOf(*variable) != nullptr &&
           variable->getStorageClass() != StorageClassKind::Extern;
}

bool VariableInfo::Impl::getIsDefinedInHeader() const {
    auto const* const variable = brant::zero::aliveAs<Variable>(getVariableBody());
    return variable != nullptr && getIsDefined() && definedInHeader(*variable);
}

bool VariableInfo::Impl::getIsDeclared() const {
    auto const* const variable = brant::zero::aliveAs<Variable>(getVariableBody());
    if (variable == nullptr) return false;
    return !variable->getDeclPos().empty() || getIsDefinedInHeader();
}

/// The definition stands in for a missing declaration only; it is not taken out where it is one of them.
bool VariableInfo::Impl::getIsDeclaredInHeader() const {
    auto const* const variable = brant::zero::aliveAs<Variable>(getVariableBody());
    if (variable == nullptr || variable->getDeclPos().empty()) return getIsDefinedInHeader();
    for (Position const& position : brant::zero::Bodies(variable->getDeclPos())) {
        if (liesInHeader(position)) return true;
    }
    return false;
}

} // namespace zelkor::ast::codeinsight
