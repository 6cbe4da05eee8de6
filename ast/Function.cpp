#include "zelkor/ast/Function.hpp"

namespace zelkor::ast {

bool Function::Impl::getIsTemplate() const {
    return hasTemplateArgs();
}

} // namespace zelkor::ast
