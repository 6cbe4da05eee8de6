// All symbols of a model by the places where they are defined and declared, found by walking from the project
// down.
#pragma once

#include <zelkor/ast.hpp>

#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace zelkor::producer::test {

using Place = std::tuple<std::string, unsigned, unsigned>; // path in the model, line, column

class ModelIndex {
  public:
    explicit ModelIndex(zelkor::ast::Project const& project);

    std::vector<zelkor::ast::Symbol> const& at(Place const& place) const;
    std::vector<zelkor::ast::Symbol> const& symbols() const { return symbols_; }
    // The namespace with that text as scope, or null.
    zelkor::ast::Namespace space(std::string const& scopeText) const;
    // Elements that the walk met, by class.
    std::map<std::string, std::size_t> const& counts() const { return counts_; }

    // Names of all owners, outermost first, each followed by "::"; owners without a name give "::" alone.
    static std::string ownerText(zelkor::ast::Symbol const& symbol);
    static std::string scopeText(zelkor::ast::Scope const& scope);
    static Place placeOf(zelkor::ast::source::SourcePosition const& position);

  private:
    void addScope(zelkor::ast::Scope const& scope);
    void addSymbol(zelkor::ast::Symbol const& symbol);
    void addFunction(zelkor::ast::Function const& function);
    void addAggregate(zelkor::ast::types::AggregateType const& aggregate);
    void addPosition(zelkor::ast::source::SourcePosition const& position, zelkor::ast::Symbol const& symbol);
    void addConstant(zelkor::ast::constants::Constant const& constant);
    void count(brant::zero::ModelElement const& element);

    std::map<Place, std::vector<zelkor::ast::Symbol>> places_;
    std::vector<zelkor::ast::Symbol> symbols_;
    std::map<std::string, zelkor::ast::Namespace> spaces_;
    std::map<std::string, std::size_t> counts_;
};

} // namespace zelkor::producer::test
