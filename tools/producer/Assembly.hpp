// Facts of units, one after the other, to a model and a report.
#pragma once

#include "Merge.hpp"
#include "Producer.hpp"

#include <memory>

namespace zelkor::producer {

class Assembly {
  public:
    // Throws ImportError when the model is not empty. Both must outlive this object.
    Assembly(zelkor::ast::Ast& ast, ImportOptions const& options);

    // Units must come in their order. False when the import was cancelled, which changes nothing any more.
    bool add(UnitFacts&& unit, std::size_t unitsTotal);
    // Fills the model in one transaction, unless cancelled, and gives the report.
    ImportResult finish();

  private:
    bool isCancelled() const { return options_.cancelled && options_.cancelled->load(); }
    void reportVariants();

    zelkor::ast::Ast& ast_;
    ImportOptions const& options_;
    std::shared_ptr<ProjectFacts> facts_; // shared with the result
    ImportResult result_;
};

// Adds a unit to the report.
void reportUnit(UnitFacts const& facts, ImportResult& result);

} // namespace zelkor::producer
