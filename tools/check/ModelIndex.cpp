#include "ModelIndex.hpp"

#include <brant/zero/Text.hpp>
#include <brant/zero/meta/Names.hpp>

namespace zelkor::producer::test {

namespace za = zelkor::ast;

ModelIndex::ModelIndex(za::Project const& project) {
    count(project);
    for (za::source::SourceFile const file : project.getFiles()) {
        count(file);
        for (za::Comment const comment : file.getComments())
            count(comment);
    }
    for (za::source::CompilationUnit const unit : project.getCompilations()) {
        for (za::Macro const macro : unit.getMacros())
            count(macro);
        addScope(unit);
    }
}

std::vector<za::Symbol> const& ModelIndex::at(Place const& place) const {
    static std::vector<za::Symbol> const none;
    auto const found = places_.find(place);
    return found == places_.end() ? none : found->second;
}

za::Namespace ModelIndex::space(std::string const& scopeText) const {
    auto const found = spaces_.find(scopeText);
    return found == spaces_.end() ? za::Namespace() : found->second;
}

Place ModelIndex::placeOf(za::source::SourcePosition const& position) {
    za::source::SourceFile const file = position.getFile();
    return {file ? brant::zero::toUtf8(file.getPath()) : std::string(), position.getLine(),
            position.getCol()};
}

std::string ModelIndex::scopeText(za::Scope const& scope) {
    if (!scope) return {};
    if (auto const space = za::Namespace::cast(scope))
        return scopeText(space.getParent()) + space.getName() + "::";
    if (auto const aggregate = scope.getOwningAggregate())
        return ownerText(aggregate) + aggregate.getName() + "::";
    if (auto const function = scope.getOwningFun()) return ownerText(function) + function.getName() + "::";
    if (auto const symbol = scope.getOwningTemplate()) return ownerText(symbol) + symbol.getName() + "::";
    return {};
}

std::string ModelIndex::ownerText(za::Symbol const& symbol) {
    za::types::AggregateType owner;
    if (auto const member = za::types::Member::cast(symbol)) owner = member.getAggregate();
    if (auto const method = za::types::Method::cast(symbol)) owner = method.getOwningAggregate();
    return owner ? ownerText(owner) + owner.getName() + "::" : scopeText(symbol.getOwningScope());
}

void ModelIndex::count(brant::zero::ModelElement const& element) {
    ++counts_[brant::zero::meta::qualifiedNameUtf8(element.getMetaClass())];
}

void ModelIndex::addConstant(za::constants::Constant const& constant) {
    if (constant) count(constant);
}

void ModelIndex::addPosition(za::source::SourcePosition const& position, za::Symbol const& symbol) {
    if (!position) return;
    count(position);
    places_[placeOf(position)].push_back(symbol);
}

void ModelIndex::addScope(za::Scope const& scope) {
    if (!scope) return;
    count(scope);
    if (auto const space = za::Namespace::cast(scope)) spaces_.emplace(scopeText(space), space);
    for (za::constants::Constant const constant : scope.getConstants())
        addConstant(constant);
    for (za::Symbol const symbol : scope.getSymbols())
        addSymbol(symbol);
    for (za::Scope const inner : scope.getNamespaces())
        addScope(inner);
}

void ModelIndex::addSymbol(za::Symbol const& symbol) {
    count(symbol);
    symbols_.push_back(symbol);
    addPosition(symbol.getDefPos(), symbol);
    for (za::source::SourcePosition const position : symbol.getDeclPos())
        addPosition(position, symbol);
    if (auto const function = za::Function::cast(symbol)) addFunction(function);
    if (auto const variable = za::Variable::cast(symbol)) addConstant(variable.getInitVal());
    if (auto const aggregate = za::types::AggregateType::cast(symbol)) addAggregate(aggregate);
    if (auto const made = za::Template::cast(symbol)) addScope(made.getScope());
    if (auto const type = za::types::TypedefType::cast(symbol)) {
        for (za::TemplateArg const argument : type.getTemplateArgs())
            count(argument);
    }
}

void ModelIndex::addFunction(za::Function const& function) {
    for (za::Variable const parameter : function.getParams()) {
        count(parameter);
        addConstant(parameter.getInitVal());
    }
    for (za::TemplateArg const argument : function.getTemplateArgs())
        count(argument);
    if (auto const range = function.getBodyPosition()) count(range);
    addScope(function.getScope());
}

void ModelIndex::addAggregate(za::types::AggregateType const& aggregate) {
    for (za::TemplateArg const argument : aggregate.getTemplateArgs())
        count(argument);
    for (za::types::Member const member : aggregate.getMembers())
        addSymbol(member);
    if (auto const type = za::types::StructType::cast(aggregate)) {
        for (za::types::BaseClass const base : type.getBaseClasses())
            count(base);
        for (za::types::Method const method : type.getMethods())
            addSymbol(method);
    }
    addScope(aggregate.getScope());
}

} // namespace zelkor::producer::test
