// The uses of a whole project, looked up from both ends.
#pragma once

#include "UseFacts.hpp"

#include <deque>
#include <vector>

namespace zelkor::producer {

class UseIndex {
  public:
    // Keeps references to the facts, which must stay as they are.
    UseIndex(std::deque<UseFacts> const& uses, std::vector<OverrideFact> const& overrides);

    // Of an owner without uses an empty record.
    UseFacts const& of(Id const& owner) const;
    // Whether any body or initialiser uses it so.
    bool isUsed(UseKind kind, Id const& target) const;
    // What a variable was made to point at, by its initialiser first.
    std::vector<Id> const& pointsTo(Id const& variable) const { return find(pointers_, variable); }
    std::vector<Id> const& overriders(Id const& method) const { return find(overriders_, method); }

  private:
    using Lists = IdMap<std::vector<Id>>;
    static std::vector<Id> const& find(Lists const& lists, Id const& id);

    IdMap<UseFacts const*> table_;
    std::array<IdSet, useKindCount> used_;
    Lists pointers_;
    Lists overriders_;
};

// Everything that a function leads to along its calls, where a call of a method also leads to its overriders.
struct Reach {
    std::vector<Id> calls;
    std::vector<Id> reads;
    std::vector<Id> writes;
};

// For each of `functions`, in their order; the lists are in the order of `elements`, and hold nothing that is
// not among them. Time and memory are those of the result, in the worst case the square of the number of
// functions.
std::vector<Reach> reachOf(std::vector<Id> const& functions, std::vector<Id> const& elements,
                           UseIndex const& index);

} // namespace zelkor::producer
