#include "zelkor/ast/types/AggregateType.hpp"

namespace zelkor::ast::types {

bool AggregateType::Impl::getIsTemplate() const {
    // Through the getter, which refuses a placeholder: it does not know the arguments of what it stands for.
    return !getTemplateArgs().empty();
}

} // namespace zelkor::ast::types
