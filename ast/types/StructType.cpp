#include "zelkor/ast/types/StructType.hpp"

#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/types/Member.hpp"
#include "zelkor/ast/types/Method.hpp"

namespace zelkor::ast::types {

bool StructType::Impl::isCOnlyStructType() const {
    if (!getBaseClasses().empty() || !getFriendAggregates().empty() || !getFriendFuns().empty()) return false;
    for (Method::Impl const& method : brant::zero::Bodies(getMethods())) {
        if (!method.getIsCompilerGenerated()) return false;
    }
    for (Member::Impl const& member : brant::zero::Bodies(getMembers())) {
        AccessSpecifierKind const access = member.getAccess();
        if (access == AccessSpecifierKind::Protected || access == AccessSpecifierKind::Private) return false;
    }
    return true;
}

} // namespace zelkor::ast::types
