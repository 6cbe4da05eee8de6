// Facts of units, one after the other, to a model and a report.
#pragma once

#include "Emitter.hpp"
#include "Merge.hpp"
#include "ParallelReader.hpp"
#include "Producer.hpp"

#include <memory>

namespace zelkor::producer {

class Assembly {
  public:
    // Throws ImportError when the model is not empty. Both must outlive this object.
    Assembly(zelkor::ast::Ast& ast, ImportOptions const& options);

    // Takes the units in their order, until cancelled.
    void addAll(ParallelReader& reader, std::size_t units);
    // Fills the model, unless cancelled, and gives the report. All is one transaction from the beginning on.
    ImportResult finish();

  private:
    bool isCancelled() const { return options_.cancelled && options_.cancelled->load(); }
    void reportVariants();

    ImportOptions const& options_;
    std::shared_ptr<ProjectFacts> facts_; // shared with the result
    brant::zero::Transaction transaction_;
    Emitter emitter_;
    ImportResult result_;
};

// Adds a unit to the report.
void reportUnit(UnitFacts const& facts, ImportResult& result);

} // namespace zelkor::producer
