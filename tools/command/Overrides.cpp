#include "Overrides.hpp"

#include "Lookup.hpp"

#include <unordered_set>

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;
using brant::zero::ModelElementImpl;

namespace {

bool isDestructor(za::types::Method const& method) {
    return method.getSpecialKind() == za::SpecialFunctionKind::Destructor;
}

/// Parameter types with typedefs resolved and without the qualifiers of the parameters themselves, which do
/// not count.
std::string parameters(za::types::Method const& method) {
    std::string text;
    for (za::Variable const& parameter : method.getParams()) {
        za::types::Type const type = za::types::Type::skipTyperefs(parameter.getType());
        text += za::types::Type::generateTypeName(type, {}, true) + ',';
    }
    return text;
}

bool overrides(za::types::Method const& method, za::types::Method const& base) {
    if (!base.getIsVirtual()) return false;
    if (isDestructor(method) || isDestructor(base)) return isDestructor(method) && isDestructor(base);
    return method.getName() == base.getName() && method.getIsThisConst() == base.getIsThisConst() &&
           method.getParams().size() == base.getParams().size() && parameters(method) == parameters(base);
}

/// All bases, each once, however often and in whatever circle they are named.
std::vector<za::types::StructType> allBases(za::types::StructType const& type) {
    std::vector<za::types::StructType> bases = directBases(type);
    std::unordered_set<ModelElementImpl const*> seen{type.get()};
    for (std::size_t i = 0; i < bases.size(); ++i) {
        if (!seen.insert(bases[i].get()).second) {
            bases.erase(bases.begin() + static_cast<std::ptrdiff_t>(i--));
            continue;
        }
        std::vector<za::types::StructType> const next = directBases(bases[i]);
        bases.insert(bases.end(), next.begin(), next.end());
    }
    return bases;
}

} // namespace

std::vector<za::types::StructType> directBases(za::types::StructType const& type) {
    std::vector<za::types::StructType> bases;
    for (za::types::BaseClass const& base : type.getBaseClasses())
        if (auto const known = za::types::StructType::cast(za::types::Type::skipTyperefs(base.getType()));
            known && !known.isProxy())
            bases.push_back(known);
    return bases;
}

Overrides::Overrides(za::Ast const& ast) {
    forEachElement(ast, [this](ModelElement const& element) {
        if (auto const method = za::types::Method::cast(element)) addMethod(method);
    });
}

void Overrides::addMethod(za::types::Method const& method) {
    za::types::StructType const owner = method.getOwningAggregate();
    if (!owner || !owner.hasBaseClasses()) return;
    for (za::types::StructType const& base : allBases(owner))
        for (za::types::Method const& candidate : base.getMethods())
            if (overrides(method, candidate)) overriders_[candidate.get()].push_back(method);
}

std::vector<za::Function> const& Overrides::of(za::Function const& method) const {
    static std::vector<za::Function> const none;
    auto const found = overriders_.find(method.get());
    return found == overriders_.end() ? none : found->second;
}

} // namespace zelkor::command
