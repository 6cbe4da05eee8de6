// The merge rule: many declarations, in one unit or in many, become one entity.
#pragma once

#include "Facts.hpp"

#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

namespace zelkor::producer {

// Folds another sight of the same entity into `known`. The first definition wins. Answers how a second
// definition differs, or nothing.
std::string foldEntity(Entity& known, Entity&& seen);

// Whether folding puts `seen` in the place of `known`.
bool replaces(Entity const& seen, Entity const& known);

struct Variant {
    std::string name;
    Position kept;
    Position dropped;
    std::string reason;
};

struct MergedUnit {
    std::string file;
    Language language = Language::C;
    std::vector<Id> files;
    std::vector<MacroFact> macros;
};

struct MergedEntity {
    Entity facts;
    std::size_t unit = 0;  // that contains it, when it has no owner
    std::size_t place = 0; // in the order of emission
};

// Facts of all units so far. Units must come in the order of the compile database.
class ProjectFacts {
  public:
    void add(UnitFacts&& unit);

    std::vector<MergedUnit> const& units() const { return units_; }
    std::deque<FileFact> const& files() const { return files_; }
    // Of the first unit that could be read.
    TargetFacts target() const { return target_.value_or(TargetFacts()); }
    std::vector<Variant> const& variants() const { return variants_; }
    // In the order of emission: by containing unit, then as in its source. Gives away the entities.
    std::vector<MergedEntity*> entities();
    struct MergedType {
        TypeFact facts;
        std::size_t unit = 0;
    };
    std::deque<MergedType> const& types() const { return types_; }
    FileFact const* file(Id const& id) const;
    std::deque<UseFacts> const& uses() const { return uses_; }
    std::vector<OverrideFact> const& overrides() const { return overrides_; }
    std::vector<Position> const& macroUses(Id const& macro) const;
    bool hasMixedTargets() const { return hasMixedTargets_; }

  private:
    void keepApart(UnitFacts& unit);
    void addFile(FileFact&& file);
    void addMacro(MacroFact&& macro, std::size_t unit);
    void addEntity(Entity&& entity, std::size_t unit);
    bool isDropped(Entity const& entity);
    void lose(Entity const& entity);
    void addUses(UnitFacts& unit);

    struct MacroUseHash {
        std::size_t operator()(MacroUse const& use) const noexcept {
            std::uint64_t const place = std::uint64_t{use.place.line} << 32 | use.place.column;
            return IdHash{}(use.macro) ^ IdHash {}(use.place.file) ^ (place * 0x9E3779B97F4A7C15U) >> 32;
        }
    };

    std::vector<MergedUnit> units_;
    IdSet mainFiles_;
    std::optional<TargetFacts> target_;
    bool hasMixedTargets_ = false;
    std::deque<FileFact> files_;
    IdMap<FileFact*> fileTable_;
    IdMap<std::pair<std::size_t, std::size_t>> macroTable_;
    std::deque<MergedEntity> entities_;
    std::vector<MergedEntity*> order_;
    IdMap<MergedEntity*> entityTable_;
    IdSet losers_; // entities of the present unit that are in the project in another form, or not
    std::deque<MergedType> types_;
    IdSet typeTable_;
    std::vector<Variant> variants_;
    std::set<std::tuple<Id, Id, unsigned, unsigned>> knownVariants_; // entity, file, line, column
    std::deque<UseFacts> uses_;
    IdMap<std::size_t> users_; // their places in the list before
    std::vector<OverrideFact> overrides_;
    IdMap<std::vector<Position>> macroUses_;
    std::set<std::pair<Id, Id>> knownOverrides_;
    tsl::robin_set<MacroUse, MacroUseHash> knownMacroUses_;
};

} // namespace zelkor::producer
