#include "zelkor/ast/Function.hpp"

namespace zelkor::ast {

bool Function::Impl::getIsTemplate() const {
    return !getTemplateArgs().empty();
}

} // namespace zelkor::ast
