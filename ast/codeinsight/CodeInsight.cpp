#include "zelkor/ast/codeinsight/CodeInsight.hpp"

#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/codeinsight/FunctionInfo.hpp"

namespace zelkor::ast::codeinsight {

std::vector<FunctionInfo> CodeInsight::Impl::getEntryPoints() const {
    std::vector<FunctionInfo> entryPoints;
    for (FunctionInfo::Impl const& function : brant::zero::Bodies(getFunctions())) {
        if (!function.getIsCalled()) entryPoints.push_back(function.This());
    }
    return entryPoints;
}

} // namespace zelkor::ast::codeinsight
