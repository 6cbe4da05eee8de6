#include "zelkor/ast/types/AggregateType.hpp"

namespace zelkor::ast::types {

bool AggregateType::Impl::getIsTemplate() const {
    return hasTemplateArgs();
}

} // namespace zelkor::ast::types
