#include "zelkor/ast/codeinsight/FunctionInfo.hpp"

#include "Positions.hpp"
#include "zelkor/ast/Function.hpp"

namespace zelkor::ast::codeinsight {

namespace {

/// Files are compared by path as text, so that two records of one file agree. A position without a file is no
/// place that another could be the same as.
bool samePlace(Position const* a, Position const& b) {
    if (a == nullptr) return false;
    File const* const fileOfA = fileOf(*a);
    File const* const fileOfB = fileOf(b);
    return fileOfA != nullptr && fileOfB != nullptr && fileOfA->getPath() == fileOfB->getPath() &&
           a->getLine() == b.getLine() && a->getCol() == b.getCol();
}

/// A defined function is declared by any position that is not its definition, in a header or anywhere. Of an
/// undefined one any declaration counts, even when only headers are asked for.
bool declaredElsewhere(FunctionInfo::Impl const& info, bool headersOnly) {
    auto const* const function = brant::zero::aliveAs<Function>(info.getFunctionBody());
    if (function == nullptr || function->getDeclPos().empty()) return false;
    if (!info.getIsDefined()) return true;
    Position const* const definition = definitionOf(*function);
    for (Position const& position : brant::zero::Bodies(function->getDeclPos())) {
        if (samePlace(definition, position)) continue;
        if (!headersOnly || liesInHeader(position)) return true;
    }
    return false;
}

} // namespace

bool FunctionInfo::Impl::getIsDefinedInHeader() const {
    auto const* const function = brant::zero::aliveAs<Function>(getFunctionBody());
    return getIsDefined() && function != nullptr && definedInHeader(*function);
}

bool FunctionInfo::Impl::getIsDeclared() const {
    return declaredElsewhere(*this, false);
}

bool FunctionInfo::Impl::getIsDeclaredInHeader() const {
    return declaredElsewhere(*this, true);
}

} // namespace zelkor::ast::codeinsight
