#include "zelkor/ast/Symbol.hpp"

#include "Names.hpp"

namespace zelkor::ast {

std::string Symbol::Impl::getFullyQualifiedName() const {
    return names::qualifiedName(*this);
}

std::string Symbol::Impl::generateSignature() const {
    return names::signature(*this);
}

} // namespace zelkor::ast
