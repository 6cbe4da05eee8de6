#include "zelkor/ast/types/AggregateType.hpp"

namespace zelkor::ast::types {

bool AggregateType::Impl::getIsTemplate() const {
    return !getTemplateArgs().empty();
}

} // namespace zelkor::ast::types
