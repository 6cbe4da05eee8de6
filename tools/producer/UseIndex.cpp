#include "UseIndex.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace zelkor::producer {

namespace {

void addOnce(std::vector<Id>& list, IdSet& known, Id const& id) {
    if (known.insert(id).second) list.push_back(id);
}

} // namespace

UseIndex::UseIndex(std::deque<UseFacts> const& uses, std::vector<OverrideFact> const& overrides) {
    IdMap<IdSet> known;
    for (UseFacts const& facts : uses) {
        table_.emplace(facts.owner, &facts);
        for (std::size_t kind = 0; kind < useKindCount; ++kind)
            used_[kind].insert(facts.lists[kind].begin(), facts.lists[kind].end());
    }
    for (UseFacts const& facts : uses) {
        for (PointerFact const& fact : facts.pointers) {
            bool const isOwn = fact.pointer == facts.owner;
            if (isOwn) addOnce(pointers_[fact.pointer], known[fact.pointer], fact.target);
        }
    }
    for (UseFacts const& facts : uses) {
        for (PointerFact const& fact : facts.pointers)
            addOnce(pointers_[fact.pointer], known[fact.pointer], fact.target);
    }
    for (OverrideFact const& fact : overrides)
        overriders_[fact.overridden].push_back(fact.method);
}

std::vector<Id> const& UseIndex::find(Lists const& lists, Id const& id) {
    static std::vector<Id> const none;
    auto const found = lists.find(id);
    return found == lists.end() ? none : found->second;
}

UseFacts const& UseIndex::of(Id const& owner) const {
    static UseFacts const none;
    auto const found = table_.find(owner);
    return found == table_.end() ? none : *found->second;
}

bool UseIndex::isUsed(UseKind kind, Id const& target) const {
    return used_[static_cast<std::size_t>(kind)].contains(target);
}

namespace {

using Number = std::uint32_t;
using Numbers = std::vector<Number>; // ascending

void unite(Numbers& to, Numbers const& from) {
    Numbers both;
    both.reserve(to.size() + from.size());
    std::set_union(to.begin(), to.end(), from.begin(), from.end(), std::back_inserter(both));
    to = std::move(both);
}

// Components of the call graph, each after those it leads to, so that one pass over them closes it.
class CallGraph {
  public:
    CallGraph(std::vector<Id> const& elements, UseIndex const& index) : index_(index), elements_(elements) {
        for (Id const& id : elements)
            numbers_.emplace(id, static_cast<Number>(numbers_.size()));
    }

    Numbers numbersOf(std::vector<Id> const& ids) const {
        Numbers numbers;
        for (Id const& id : ids) {
            auto const found = numbers_.find(id);
            if (found != numbers_.end()) numbers.push_back(found->second);
        }
        std::sort(numbers.begin(), numbers.end());
        numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
        return numbers;
    }

    // What a call of the function, or of one that overrides it, leads to at one step.
    Numbers next(Number function) const {
        std::vector<Id> ids = index_.of(elements_[function]).of(UseKind::Call);
        for (std::size_t i = 0; i < ids.size(); ++i) {
            for (Id const& id : index_.overriders(ids[i])) {
                if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
            }
        }
        return numbersOf(ids);
    }

    UseFacts const& usesOf(Number function) const { return index_.of(elements_[function]); }
    std::size_t size() const { return elements_.size(); }
    Number numberOf(Id const& id) const { return numbers_.at(id); }

    std::vector<Id> idsOf(Numbers const& numbers) const {
        std::vector<Id> ids;
        for (Number const number : numbers)
            ids.push_back(elements_[number]);
        return ids;
    }

  private:
    UseIndex const& index_;
    std::vector<Id> const& elements_;
    IdMap<Number> numbers_;
};

struct Closed {
    Numbers calls;
    Numbers reads;
    Numbers writes;
};

// Tarjan's components, with a stack of our own: chains of calls may be longer than the thread's.
class Closure {
  public:
    explicit Closure(CallGraph const& graph)
        : graph_(graph), state_(graph.size()), component_(graph.size(), none) {}

    Closed const& of(Number function) {
        if (component_[function] == none) visit(function);
        return closed_[component_[function]];
    }

  private:
    static constexpr Number none = static_cast<Number>(-1);
    struct State {
        Number order = none;
        Number lowest = none;
        bool isOpen = false;
    };
    struct Step {
        Number function;
        Numbers next;
        std::size_t at = 0;
    };

    void open(Number function) {
        state_[function] = {counter_, counter_, true};
        ++counter_;
        open_.push_back(function);
        steps_.push_back({function, graph_.next(function)});
    }

    void visit(Number start) {
        open(start);
        while (!steps_.empty()) {
            Step& step = steps_.back();
            State& state = state_[step.function];
            if (step.at < step.next.size()) {
                Number const next = step.next[step.at++];
                if (state_[next].order == none) {
                    open(next);
                } else if (state_[next].isOpen) {
                    state.lowest = std::min(state.lowest, state_[next].order);
                }
                continue;
            }
            Number const function = step.function;
            if (state.lowest == state.order) close(function);
            steps_.pop_back();
            if (!steps_.empty()) {
                State& above = state_[steps_.back().function];
                above.lowest = std::min(above.lowest, state_[function].lowest);
            }
        }
    }

    void close(Number root) {
        auto const first = std::find(open_.rbegin(), open_.rend(), root).base() - 1;
        std::vector<Number> const members(first, open_.end());
        open_.erase(first, open_.end());
        Number const number = static_cast<Number>(closed_.size());
        for (Number const member : members) {
            component_[member] = number;
            state_[member].isOpen = false;
        }
        Closed made;
        for (Number const member : members) {
            Numbers const next = graph_.next(member);
            unite(made.calls, next);
            unite(made.reads, graph_.numbersOf(graph_.usesOf(member).of(UseKind::Read)));
            unite(made.writes, graph_.numbersOf(graph_.usesOf(member).of(UseKind::Write)));
            for (Number const callee : next) {
                if (component_[callee] == number) continue;
                Closed const& other = closed_[component_[callee]];
                unite(made.calls, other.calls);
                unite(made.reads, other.reads);
                unite(made.writes, other.writes);
            }
        }
        closed_.push_back(std::move(made));
    }

    CallGraph const& graph_;
    std::vector<State> state_;
    std::vector<Number> component_;
    std::vector<Closed> closed_;
    std::vector<Number> open_;
    std::vector<Step> steps_;
    Number counter_ = 0;
};

} // namespace

std::vector<Reach> reachOf(std::vector<Id> const& functions, std::vector<Id> const& elements,
                           UseIndex const& index) {
    CallGraph const graph(elements, index);
    Closure closure(graph);
    std::vector<Reach> all;
    for (Id const& id : functions) {
        Closed const& closed = closure.of(graph.numberOf(id));
        all.push_back({graph.idsOf(closed.calls), graph.idsOf(closed.reads), graph.idsOf(closed.writes)});
    }
    return all;
}

} // namespace zelkor::producer
