// Uses of one unit without repetition, in the order in which they are met.
#pragma once

#include "Facts.hpp"

#include <cstdint>
#include <deque>
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
    // Owners by number make small keys, of which a large unit has hundreds of thousands.
    struct Key {
        Id target{};
        std::uint32_t owner = 0;
        std::uint32_t kind = 0;

        friend bool operator==(Key const&, Key const&) = default;
    };
    struct KeyHash {
        std::size_t operator()(Key const& key) const noexcept;
    };
    struct Extent {
        Range range;
        Id owner{};
    };

    std::uint32_t numberOf(Id const& owner);
    UseFacts& usesOf(Id const& owner) { return uses_[numberOf(owner)]; }
    void assignMacros(std::vector<MacroUse> const& uses);

    bool isWanted_;
    std::deque<UseFacts> uses_;
    IdMap<std::uint32_t> numbers_; // places in the list before
    Id lastOwner_{};               // uses come body by body
    std::uint32_t lastNumber_ = 0;
    tsl::robin_set<Key, KeyHash> known_;
    std::set<std::tuple<Id, Id, Id>> knownPointers_; // owner, pointer, target
    std::set<std::pair<Id, Id>> knownOverrides_;
    std::vector<OverrideFact> overrides_;
    std::vector<Extent> extents_;
};

} // namespace zelkor::producer
