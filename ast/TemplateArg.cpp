#include "zelkor/ast/TemplateArg.hpp"

#include "Names.hpp"

namespace zelkor::ast {

std::string TemplateArg::Impl::getFullyQualifiedName(bool prevIsPack) const {
    return names::argumentName(*this, prevIsPack);
}

} // namespace zelkor::ast
