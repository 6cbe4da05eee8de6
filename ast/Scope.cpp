#include "zelkor/ast/Scope.hpp"

#include "Names.hpp"
#include "search/SymbolSearch.hpp"

namespace zelkor::ast {

std::string Scope::Impl::getFullyQualifiedName() const {
    return names::qualifiedName(*this);
}

std::vector<Symbol> Scope::Impl::findSymbolByMetaClass(::brant::zero::meta::Class const& metaCls,
                                                       FinderOptions const& opts) const {
    return findSymbolByMetaClassAndName(metaCls, {}, opts);
}

std::vector<Symbol> Scope::Impl::findSymbolByMetaClassAndName(::brant::zero::meta::Class const& metaCls,
                                                              std::string const& qname,
                                                              FinderOptions const& opts) const {
    return search::findSymbols(*this, metaCls, qname, opts);
}

} // namespace zelkor::ast
