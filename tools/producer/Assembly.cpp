#include "Assembly.hpp"

#include <set>
#include <utility>

namespace zelkor::producer {

namespace {

DiagnosticSeverity toPublic(Severity severity) {
    return static_cast<DiagnosticSeverity>(static_cast<int>(severity));
}

std::string placeText(Diagnostic const& diagnostic) {
    if (diagnostic.file.empty()) return diagnostic.text;
    return diagnostic.file + ':' + std::to_string(diagnostic.line) + ':' + std::to_string(diagnostic.column) +
           ": " + diagnostic.text;
}

std::string placeText(ProjectFacts const& facts, Position const& position) {
    FileFact const* const file = facts.file(position.file);
    return (file ? file->path : std::string("?")) + ':' + std::to_string(position.line) + ':' +
           std::to_string(position.column);
}

brant::zero::Transaction beginFilling(zelkor::ast::Ast& ast) {
    if (ast.getModel().size() != 0) throw ImportError("the model is not empty; import into a new one");
    return ast.getModel().beginTransaction();
}

} // namespace

void reportUnit(UnitFacts const& facts, ImportResult& result) {
    UnitReport unit;
    unit.file = facts.file;
    if (!facts.failure.empty()) {
        unit.state = UnitState::Failed;
        unit.reason = facts.failure;
        unit.advice = facts.advice;
    }
    for (Diagnostic const& diagnostic : facts.diagnostics) {
        if (diagnostic.severity >= Severity::Error && unit.state == UnitState::Complete) {
            unit.state = UnitState::Incomplete;
            unit.reason = placeText(diagnostic);
        }
        result.diagnostics.push_back({diagnostic.file, diagnostic.line, diagnostic.column,
                                      toPublic(diagnostic.severity), diagnostic.text});
    }
    for (std::string const& option : facts.rejectedOptions)
        ++result.rejectedOptions[option];
    for (std::string const& header :
         std::set<std::string>(facts.missingHeaders.begin(), facts.missingHeaders.end()))
        ++result.missingHeaders[header];
    result.units.push_back(std::move(unit));
}

Assembly::Assembly(zelkor::ast::Ast& ast, ImportOptions const& options)
    : options_(options), facts_(std::make_shared<ProjectFacts>()), transaction_(beginFilling(ast)),
      emitter_(ast, *facts_) {}

void Assembly::addAll(ParallelReader& reader, std::size_t units) {
    for (std::size_t i = 0; i < units; ++i) {
        // While the rest of the unit is still being read.
        emitter_.emitComments(reader.files(i));
        UnitFacts unit = reader.take(i);
        if (isCancelled()) return;
        reportUnit(unit, result_);
        facts_->add(std::move(unit));
        if (options_.progress) options_.progress({result_.units.size(), units, result_.units.back().file});
    }
}

void Assembly::reportVariants() {
    for (Variant const& variant : facts_->variants()) {
        result_.variants.push_back({variant.name, placeText(*facts_, variant.kept),
                                    placeText(*facts_, variant.dropped), variant.reason});
    }
    if (facts_->hasMixedTargets()) {
        result_.warnings.push_back(
            "the units are for different targets; the sizes of types are those of the first unit");
    }
}

ImportResult Assembly::finish() {
    if (!isCancelled()) {
        reportVariants();
        emitter_.emit(options_.insight);
        if (!isCancelled()) transaction_.commit();
        result_.created = emitter_.created();
    }
    result_.isCancelled = isCancelled();
    result_.workspace = facts_;
    return std::move(result_);
}

} // namespace zelkor::producer
