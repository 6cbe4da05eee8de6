// Uses of one unit without repetition, in the order in which they are met.
#pragma once

#include "Facts.hpp"

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

namespace zelkor::producer {

class UseRecorder {
  public:
    // Nothing is kept unless wanted, so that the readers need not ask.
    explicit UseRecorder(bool isWanted) : isWanted_(isWanted) {}

    // Nil targets are what the model has no element for.
    void add(Id const& owner, UseKind kind, Id const& target);
    void addPointer(Id const& owner, Id const& pointer, Id const& target);
    void addBody(Id const& owner);
    void addAssembler(Id const& owner);
    void addOverride(Id const& method, Id const& overridden);
    // Macros used in that text are the owner's, unless the text of another owner inside it has them.
    void addExtent(Id const& owner, Range const& extent);
    // Gives all to the facts, which must have the uses of macros by now; call once.
    void finish(UnitFacts& facts);

  private:
    struct Extent {
        Range range;
        Id owner{};
    };

    std::uint32_t numberOf(Id const& owner);
    UseFacts& usesOf(Id const& owner) { return uses_[numberOf(owner)]; }
    bool isKnown(std::uint32_t owner, UseKind kind, Id const& target);
    void assignMacros(std::vector<MacroUse> const& uses);

    bool isWanted_;
    std::deque<UseFacts> uses_;
    IdMap<std::uint32_t> numbers_; // places in the list before
    Id lastOwner_{};               // uses come body by body
    std::uint32_t lastNumber_ = 0;
    std::map<std::pair<std::uint32_t, UseKind>, IdSet> known_; // of the lists that are too long to search
    std::set<std::tuple<Id, Id, Id>> knownPointers_;           // owner, pointer, target
    std::set<std::pair<Id, Id>> knownOverrides_;
    std::vector<OverrideFact> overrides_;
    std::vector<Extent> extents_;
};

} // namespace zelkor::producer
