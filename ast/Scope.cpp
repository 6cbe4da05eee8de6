#include "zelkor/ast/Scope.hpp"

#include "Names.hpp"

namespace zelkor::ast {

std::string Scope::Impl::getFullyQualifiedName() const {
    return names::qualifiedName(*this);
}

} // namespace zelkor::ast
