#include "zelkor/ast/Function.hpp"

namespace zelkor::ast {

bool Function::Impl::getIsTemplate() const {
    // Through the getter, which refuses a placeholder: it does not know the arguments of what it stands for.
    return !getTemplateArgs().empty();
}

} // namespace zelkor::ast
