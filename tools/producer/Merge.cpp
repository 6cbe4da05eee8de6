#include "Merge.hpp"

#include "Programs.hpp"

#include <algorithm>
#include <iterator>

namespace zelkor::producer {

namespace {

void addPositions(std::vector<Position>& known, std::vector<Position>&& seen) {
    for (Position& position : seen) {
        if (std::find(known.begin(), known.end(), position) == known.end()) known.push_back(position);
    }
}

// What every declaration of a function may add to every other.
void shareFunction(FunctionFacts& to, FunctionFacts const& from) {
    to.optionalParameters = std::max(to.optionalParameters, from.optionalParameters);
    to.isInline |= from.isInline;
    to.isDeleted |= from.isDeleted;
    to.isDefinedInFriend |= from.isDefinedInFriend;
    to.isVirtual |= from.isVirtual;
    to.isAbstract |= from.isAbstract;
    to.isFinal |= from.isFinal;
    for (std::size_t i = 0; i < std::min(to.parameters.size(), from.parameters.size()); ++i) {
        if (to.parameters[i].name.empty()) to.parameters[i].name = from.parameters[i].name;
        if (!to.parameters[i].defaultValue) to.parameters[i].defaultValue = from.parameters[i].defaultValue;
    }
}

std::string differenceOf(FunctionFacts const& a, FunctionFacts const& b) {
    bool const sameParameters =
        std::equal(a.parameters.begin(), a.parameters.end(), b.parameters.begin(), b.parameters.end(),
                   [](ParameterFact const& x, ParameterFact const& y) { return x.type == y.type; });
    if (!sameParameters) return "other parameters";
    // Bodies are no part of stubs.
    return a.body && b.body && (*a.body != *b.body || a.contents != b.contents) ? "another body" : "";
}

std::string differenceOf(RecordFacts const& a, RecordFacts const& b) {
    if (a.bases != b.bases) return "other bases";
    return a.contents == b.contents || a.isInstantiated || b.isInstantiated ? "" : "other members";
}

std::string differenceOf(EnumFacts const& a, EnumFacts const& b) {
    bool const same = std::equal(a.enumerators.begin(), a.enumerators.end(), b.enumerators.begin(),
                                 b.enumerators.end(), [](EnumeratorFact const& x, EnumeratorFact const& y) {
                                     return x.name == y.name && x.value == y.value;
                                 });
    return same ? "" : "other enumerators";
}

template <class Facts>
std::string differenceOf(Facts const&, Facts const&) {
    return {};
}

std::string differenceOf(Entity const& known, Entity const& seen) {
    // Each unit has its own part of a system header, and configuring those is not the project's doing.
    if (!known.inProject || !seen.inProject) return {};
    if (known.kind != seen.kind) return "another kind of entity";
    if (known.type != seen.type) return "another type";
    std::string difference = std::visit(
        [&](auto const& facts) {
            auto const* const other = seen.as<std::decay_t<decltype(facts)>>();
            return other ? differenceOf(facts, *other) : std::string("another kind of entity");
        },
        known.detail);
    // The same text in two files is legal for typedefs, and only there; what has no name is placed
    // differently in C.
    if (difference.empty() && known.kind != EntityKind::Typedef && !known.name.empty() && known.definition &&
        seen.definition && *known.definition != *seen.definition) {
        difference = "another place";
    }
    return difference;
}

void shareAll(Entity& to, Entity&& from) {
    addPositions(to.declarations, std::move(from.declarations));
    for (ExtentFact const& extent : from.extents) {
        bool const isKnown = std::any_of(to.extents.begin(), to.extents.end(), [&](ExtentFact const& known) {
            return known.place == extent.place;
        });
        if (!isKnown) to.extents.push_back(extent);
    }
    if (to.comments.empty()) to.comments = std::move(from.comments);
    to.inProject |= from.inProject;
    if (to.linkage == Linkage::None) to.linkage = from.linkage;
    if (FunctionFacts* const function = to.as<FunctionFacts>()) {
        if (FunctionFacts const* const other = from.as<FunctionFacts>()) shareFunction(*function, *other);
    }
    if (VariableFacts* const variable = to.as<VariableFacts>()) {
        VariableFacts const* const other = from.as<VariableFacts>();
        if (other && !variable->initialiser) variable->initialiser = other->initialiser;
    }
    if (RecordFacts* const record = to.as<RecordFacts>()) {
        RecordFacts const* const other = from.as<RecordFacts>();
        for (Id const& id : other ? other->friendFunctions : std::vector<Id>{}) {
            auto const& list = record->friendFunctions;
            if (std::find(list.begin(), list.end(), id) == list.end()) record->friendFunctions.push_back(id);
        }
    }
    if (TemplateFacts* const facts = to.as<TemplateFacts>()) {
        TemplateFacts const* const other = from.as<TemplateFacts>();
        if (other && facts->parameters.empty()) facts->parameters = other->parameters;
        if (other && facts->prototype.is_nil()) facts->prototype = other->prototype;
    }
}

// Beside another definition a tentative one is a declaration.
void demote(Entity& entity) {
    entity.declarations.insert(entity.declarations.begin(), *entity.definition);
    entity.definition.reset();
    entity.isDefined = false;
}

template <class Element>
void uniteLists(std::vector<Element>& known, std::vector<Element> const& seen) {
    if (known == seen) return;
    for (Element const& element : seen) {
        if (std::find(known.begin(), known.end(), element) == known.end()) known.push_back(element);
    }
}

void unite(UseFacts& known, UseFacts const& seen) {
    for (std::size_t kind = 0; kind < useKindCount; ++kind)
        uniteLists(known.lists[kind], seen.lists[kind]);
    uniteLists(known.pointers, seen.pointers);
    known.hasAssembler |= seen.hasAssembler;
}

} // namespace

bool replaces(Entity const& seen, Entity const& known) {
    return seen.isDefined && (!known.isDefined || (isTentative(known) && !isTentative(seen)));
}

std::string foldEntity(Entity& known, Entity&& seen) {
    bool const isElsewhere = seen.definition && known.definition && *seen.definition != *known.definition;
    if (isElsewhere && isTentative(seen)) demote(seen);
    if (replaces(seen, known)) {
        if (known.isDefined) demote(known);
        Entity declared = std::move(known);
        known = std::move(seen);
        shareAll(known, std::move(declared));
        return {};
    }
    std::string const difference = seen.isDefined ? differenceOf(known, seen) : std::string();
    if (!difference.empty()) return difference;
    if (seen.definition && seen.definition != known.definition) seen.declarations.push_back(*seen.definition);
    shareAll(known, std::move(seen));
    return {};
}

void ProjectFacts::add(UnitFacts&& unit) {
    std::size_t const number = units_.size();
    MergedUnit& merged = units_.emplace_back();
    merged.file = unit.file;
    merged.language = unit.language;
    if (!unit.failure.empty()) return;
    if (!target_) target_ = unit.target;
    hasMixedTargets_ |= !(*target_ == unit.target);
    keepApart(unit);
    for (FileFact& file : unit.files) {
        merged.files.push_back(file.id);
        addFile(std::move(file));
    }
    for (MacroFact& macro : unit.macros)
        addMacro(std::move(macro), number);
    losers_.clear();
    for (Entity& entity : unit.entities)
        addEntity(std::move(entity), number);
    for (TypeFact& type : unit.types) {
        if (typeTable_.insert(type.id).second) types_.push_back({std::move(type), number});
    }
    addUses(unit);
}

// Definitions of other programs become entities of their own before anything is folded.
void ProjectFacts::keepApart(UnitFacts& unit) {
    if (!unit.files.empty()) mainFiles_.insert(unit.files.front().id);
    auto const known = [this](Id const& id) -> Entity const* {
        auto const found = entityTable_.find(id);
        return found == entityTable_.end() ? nullptr : &found->second->facts;
    };
    Renaming const renaming = findRivals(unit, known, mainFiles_);
    if (!renaming.empty()) rename(unit, renaming);
}

// Macros may make the body of a header call other things in every unit; all of them count. What a lost
// definition uses is lost with it.
void ProjectFacts::addUses(UnitFacts& unit) {
    for (UseFacts& uses : unit.uses) {
        if (losers_.contains(uses.owner)) continue;
        auto const [entry, isNew] = users_.try_emplace(uses.owner, uses_.size());
        if (isNew) {
            uses_.push_back(std::move(uses));
        } else if (uses.hasBody) {
            UseFacts& known = uses_[entry->second];
            if (known.hasBody)
                unite(known, uses);
            else
                known = std::move(uses);
        }
    }
    for (OverrideFact const& fact : unit.overrides) {
        if (knownOverrides_.emplace(fact.method, fact.overridden).second) overrides_.push_back(fact);
    }
    for (MacroUse const& use : unit.macroUses) {
        if (knownMacroUses_.insert(use).second) macroUses_[use.macro].push_back(use.place);
    }
}

std::vector<Position> const& ProjectFacts::macroUses(Id const& macro) const {
    static std::vector<Position> const none;
    auto const found = macroUses_.find(macro);
    return found == macroUses_.end() ? none : found->second;
}

void ProjectFacts::addFile(FileFact&& file) {
    auto const [entry, isNew] = fileTable_.try_emplace(file.id);
    if (isNew) {
        entry.value() = &files_.emplace_back(std::move(file));
        return;
    }
    FileFact& known = *entry->second;
    known.isInclude |= file.isInclude;
    known.isSystemSyntax |= file.isSystemSyntax;
    known.isPreinclude |= file.isPreinclude;
    known.isFromSystemDirectory |= file.isFromSystemDirectory;
    known.isTopLevel |= file.isTopLevel;
    if (known.writtenName.empty()) known.writtenName = std::move(file.writtenName);
    for (IncludeFact& include : file.includes) {
        if (std::find(known.includes.begin(), known.includes.end(), include) == known.includes.end()) {
            known.includes.push_back(std::move(include));
        }
    }
}

void ProjectFacts::addMacro(MacroFact&& macro, std::size_t unit) {
    auto const [entry, isNew] = macroTable_.try_emplace(macro.id, unit, units_[unit].macros.size());
    if (isNew) {
        units_[unit].macros.push_back(std::move(macro));
    } else {
        units_[entry->second.first].macros[entry->second.second].isReferenced |= macro.isReferenced;
    }
}

// What stands in a definition that lost does not belong to the one that won.
bool ProjectFacts::isDropped(Entity const& entity) {
    if (!losers_.contains(entity.owner)) return false;
    lose(entity);
    return true;
}

void ProjectFacts::lose(Entity const& entity) {
    losers_.insert(entity.id);
    FunctionFacts const* const function = entity.as<FunctionFacts>();
    for (std::size_t i = 0; function && i < function->parameters.size(); ++i)
        losers_.insert(makeId(entity.id, "parameter", i));
}

void ProjectFacts::addEntity(Entity&& entity, std::size_t unit) {
    Id const id = entity.id;
    if (isDropped(entity)) return;
    auto const [entry, isNew] = entityTable_.try_emplace(id);
    if (isNew) {
        entry.value() = &entities_.emplace_back(MergedEntity{std::move(entity), unit, order_.size()});
        order_.push_back(entry->second);
        return;
    }
    MergedEntity& known = *entry->second;
    bool const isReplaced = replaces(entity, known.facts);
    std::optional<Position> const place = entity.definition;
    // Folding takes nothing of what it refuses.
    std::string reason = foldEntity(known.facts, std::move(entity));
    if (isReplaced) {
        // It now stands where it is defined, after what this unit brought before it.
        known.unit = unit;
        order_[known.place] = nullptr;
        known.place = order_.size();
        order_.push_back(&known);
    }
    if (reason.empty()) return;
    lose(entity);
    Position const dropped = place.value_or(Position{});
    // Once for all units that see it.
    if (!knownVariants_.emplace(id, dropped.file, dropped.line, dropped.column).second) return;
    variants_.push_back(
        {known.facts.name, known.facts.definition.value_or(Position{}), dropped, std::move(reason)});
}

std::vector<MergedEntity*> ProjectFacts::entities() {
    std::vector<MergedEntity*> ordered;
    std::copy_if(order_.begin(), order_.end(), std::back_inserter(ordered),
                 [](auto const* entity) { return entity; });
    return ordered;
}

FileFact const* ProjectFacts::file(Id const& id) const {
    auto const found = fileTable_.find(id);
    return found == fileTable_.end() ? nullptr : found->second;
}

} // namespace zelkor::producer
