// Uses of one unit without repetition, in the order in which they are met.
#pragma once

#include "Facts.hpp"

#include <deque>
#include <unordered_map>
#include <unordered_set>

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
    struct Key {
        Id first{};
        Id second{};
        unsigned kind = 0;
        Id third{};

        friend bool operator==(Key const&, Key const&) = default;
    };
    struct KeyHash {
        std::size_t operator()(Key const& key) const noexcept;
    };
    struct Extent {
        Range range;
        Id owner{};
    };

    UseFacts& usesOf(Id const& owner);
    void assignMacros(std::vector<MacroUse> const& uses);

    bool isWanted_;
    std::deque<UseFacts> uses_;
    std::unordered_map<Id, UseFacts*, IdHash> table_;
    std::unordered_set<Key, KeyHash> known_;
    std::vector<OverrideFact> overrides_;
    std::vector<Extent> extents_;
};

} // namespace zelkor::producer
