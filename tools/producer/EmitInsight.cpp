// Code insight: one record for each function, variable, type and macro, beside what the unit contains.
#include "Emitter.hpp"

#include <algorithm>

namespace zelkor::producer {

namespace za = zelkor::ast;
namespace ci = zelkor::ast::codeinsight;

namespace {

ExtentFact const* extentAt(Entity const& entity, Position const& place) {
    auto const found = std::find_if(entity.extents.begin(), entity.extents.end(),
                                    [&](ExtentFact const& fact) { return fact.place == place; });
    return found == entity.extents.end() ? nullptr : &*found;
}

} // namespace

void Emitter::emitInsight(std::vector<MergedEntity*> const& entities, bool isTransitive) {
    UseIndex const index(facts_.uses(), facts_.overrides());
    std::vector<ci::CodeInsight> insights;
    for (za::source::CompilationUnit const& unit : units_) {
        insights.push_back(create<ci::CodeInsight>(makeId(unit.uuid(), "insight")));
        za::Scope(unit).getAnnotationsMutable().add(insights.back());
    }
    for (MergedEntity const* const merged : entities)
        emitRecord(insights.at(merged->unit), merged->facts, index);
    std::size_t number = 0;
    for (MergedUnit const& unit : facts_.units()) {
        for (MacroFact const& macro : unit.macros)
            emitMacroInfo(insights[number], macro);
        ++number;
    }
    if (isTransitive) emitReach(entities, index);
}

void Emitter::emitRecord(ci::CodeInsight const& insight, Entity const& entity, UseIndex const& index) {
    switch (entity.kind) {
    case EntityKind::Function:
    case EntityKind::Method:
        emitFunctionInfo(insight, entity, index);
        break;
    case EntityKind::Variable:
    case EntityKind::Member: {
        auto const record = emitVariableInfo(insight, entity.id, index);
        // What is in a function has its place there.
        if (!find<za::Function>(entity.owner)) setRanges(record, entity);
        break;
    }
    case EntityKind::Struct:
    case EntityKind::Class:
    case EntityKind::Union:
    case EntityKind::Enum:
    case EntityKind::Typedef: {
        auto const record = create<ci::TypeInfo>(makeId(entity.id, "insight"));
        record.setType(find<za::types::Type>(entity.id));
        setRanges(record, entity);
        insight.getTypesMutable().add(record);
        break;
    }
    case EntityKind::Namespace:
    case EntityKind::Template:
        break;
    }
}

template <class Record>
void Emitter::setRanges(Record const& record, Entity const& entity) {
    if (!entity.inProject) return;
    Id const id = record.uuid();
    ExtentFact const* const definition = entity.definition ? extentAt(entity, *entity.definition) : nullptr;
    if (definition) record.setDefinitionSourceRange(range(definition->range, makeId(id, "definition")));
    std::size_t ordinal = 0;
    for (Position const& place : entity.declarations) {
        if (ExtentFact const* const declared = extentAt(entity, place))
            record.getDeclarationSourceRangeMutable().add(
                range(declared->range, makeId(id, "declaration", ordinal++)));
    }
}

template <class Element, class List>
void Emitter::addAll(List& list, std::vector<Id> const& ids) {
    for (Id const& id : ids) {
        if (auto const element = find<Element>(id)) list.add(element);
    }
}

template <class Record>
void Emitter::addPointers(Record const& record, std::vector<Id> const& targets) {
    if (targets.empty()) return;
    auto const pointers = create<ci::PtrInfo>(makeId(record.uuid(), "pointers"));
    addAll<za::Symbol>(pointers.getPointsToMutable(), targets);
    record.getAnnotationsMutable().add(pointers);
}

void Emitter::emitFunctionInfo(ci::CodeInsight const& insight, Entity const& entity, UseIndex const& index) {
    FunctionFacts const& facts = *entity.as<FunctionFacts>();
    auto const record = create<ci::FunctionInfo>(makeId(entity.id, "insight"));
    elements_.emplace(record.uuid(), record);
    UseFacts const& uses = index.of(entity.id);
    record.setFunction(find<za::Function>(entity.id));
    if (!facts.isCompilerGenerated) setRanges(record, entity);
    addAll<za::types::Type>(record.getReferencedTypesMutable(), uses.of(UseKind::Type));
    addAll<za::Macro>(record.getReferencedMacrosMutable(), uses.of(UseKind::Macro));
    addAll<za::Function>(record.getCalledFunsMutable(), uses.of(UseKind::Call));
    addAll<za::Variable>(record.getReadVarsMutable(), uses.of(UseKind::Read));
    addAll<za::Variable>(record.getWrittenVarsMutable(), uses.of(UseKind::Write));
    record.setHasASMBlock(uses.hasAssembler);
    record.setIsCalled(index.isUsed(UseKind::Call, entity.id));
    record.setIsAddressTaken(index.isUsed(UseKind::Address, entity.id));
    record.setIsDefined(entity.isDefined);
    addPointers(record, uses.of(UseKind::Address));
    std::vector<Id> const& overriders = index.overriders(entity.id);
    if (!overriders.empty()) {
        auto const made = create<ci::FunInfo>(makeId(record.uuid(), "overriders"));
        addAll<za::Function>(made.getCalledFunsMutable(), overriders);
        record.getAnnotationsMutable().add(made);
    }
    insight.getFunctionsMutable().add(record);
    if (!entity.inProject) return;
    for (std::size_t i = 0; i < facts.parameters.size(); ++i)
        emitVariableInfo(insight, makeId(entity.id, "parameter", i), index);
}

ci::VariableInfo Emitter::emitVariableInfo(ci::CodeInsight const& insight, Id const& id,
                                           UseIndex const& index) {
    auto const record = create<ci::VariableInfo>(makeId(id, "insight"));
    UseFacts const& uses = index.of(id);
    record.setVariable(find<za::Variable>(id));
    record.setIsRead(index.isUsed(UseKind::Read, id));
    record.setIsWritten(index.isUsed(UseKind::Write, id));
    bool const hasUses = !uses.of(UseKind::Call).empty() || !uses.of(UseKind::Read).empty() ||
                         !uses.of(UseKind::Write).empty();
    if (hasUses) {
        auto const made = create<ci::FunInfo>(makeId(record.uuid(), "initialiser"));
        addAll<za::Function>(made.getCalledFunsMutable(), uses.of(UseKind::Call));
        addAll<za::Variable>(made.getReadVarsMutable(), uses.of(UseKind::Read));
        addAll<za::Variable>(made.getWrittenVarsMutable(), uses.of(UseKind::Write));
        record.getAnnotationsMutable().add(made);
    }
    // What the initialiser hands to others by address is told with what the variable points at itself.
    std::vector<Id> targets = index.pointsTo(id);
    for (Id const& target : uses.of(UseKind::Address)) {
        if (std::find(targets.begin(), targets.end(), target) == targets.end()) targets.push_back(target);
    }
    addPointers(record, targets);
    insight.getVariablesMutable().add(record);
    return record;
}

void Emitter::emitMacroInfo(ci::CodeInsight const& insight, MacroFact const& fact) {
    auto const record = create<ci::MacroInfo>(makeId(fact.id, "insight"));
    record.setMacro(find<za::Macro>(fact.id));
    std::size_t ordinal = 0;
    for (Position const& place : facts_.macroUses(fact.id))
        record.getInvocationPositionsMutable().add(position(place, makeId(record.uuid(), "use", ordinal++)));
    insight.getMacrosMutable().add(record);
}

void Emitter::emitReach(std::vector<MergedEntity*> const& entities, UseIndex const& index) {
    std::vector<Id> functions;
    std::vector<Id> elements;
    for (MergedEntity const* const merged : entities) {
        Entity const& entity = merged->facts;
        elements.push_back(entity.id);
        FunctionFacts const* const facts = entity.as<FunctionFacts>();
        if (!facts) continue;
        functions.push_back(entity.id);
        for (std::size_t i = 0; i < facts->parameters.size(); ++i)
            elements.push_back(makeId(entity.id, "parameter", i));
    }
    std::vector<Reach> const reached = reachOf(functions, elements, index);
    for (std::size_t i = 0; i < functions.size(); ++i) {
        auto const record = find<ci::FunctionInfo>(makeId(functions[i], "insight"));
        addAll<za::Function>(record.getTransitiveCalledFunsMutable(), reached[i].calls);
        addAll<za::Variable>(record.getTransitiveReadVarsMutable(), reached[i].reads);
        addAll<za::Variable>(record.getTransitiveWrittenVarsMutable(), reached[i].writes);
    }
}

} // namespace zelkor::producer
