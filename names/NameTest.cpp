#include "NameTest.hpp"

#include "NameWriter.hpp"
#include "TextPatterns.hpp"
#include "zelkor/ast/Template.hpp"

namespace zelkor::ast::names {

namespace {

/// \returns the symbol that gives a template its name, or null when that takes more than a few steps.
Body const* namedBy(Body const& symbol) {
    Body const* at = &symbol;
    for (int steps = 0; steps < 8; ++steps) {
        if (!isA<Template>(*at)) return at;
        Body const* prototype = alive(as<Template>(*at).getProtoTypeInstantiationBody());
        if (prototype == nullptr) return at;
        at = prototype;
    }
    return nullptr;
}

/// A qualified name ends with the symbol's own name, behind `::` or nothing, or with an argument list behind
/// that name.
bool mayBeQualified(std::string_view wanted, Body const& symbol) {
    Body const* const named = namedBy(symbol);
    if (named == nullptr) return true;
    std::string_view own = as<Symbol>(*named).getName();
    if (own.empty() && isA<types::Type>(*named)) own = unnamed;
    if (own.empty()) return true;
    if (wanted.ends_with(own)) {
        std::size_t const begin = wanted.size() - own.size();
        return begin == 0 || wanted[begin - 1] == ':' || wanted.back() == '>';
    }
    return wanted.back() == '>' && wanted.find(own) != std::string_view::npos;
}

/// The signature of a function holds its name; that of a variable need not, since a function type drops it.
bool mayBeSignature(std::string_view wanted, Body const& symbol) {
    Body const* const named = namedBy(symbol);
    return named == nullptr || !isA<Function>(*named) ||
           wanted.find(as<Symbol>(*named).getName()) != std::string_view::npos;
}

} // namespace

bool NameTest::operator()(Symbol::Impl const& symbol) const {
    if (wanted_.empty()) return true;
    switch (strategy_) {
    case NameFinderKind::Name:
        return symbol.getName() == wanted_;
    case NameFinderKind::Signature:
        return mayBeSignature(wanted_, symbol) && symbol.generateSignature() == wanted_;
    default:
        return mayBeQualified(wanted_, symbol) && symbol.getFullyQualifiedName() == wanted_;
    }
}

} // namespace zelkor::ast::names
