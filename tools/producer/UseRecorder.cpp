#include "UseRecorder.hpp"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace zelkor::producer {

namespace {

constexpr std::size_t longList = 48;

auto orderOf(Position const& position) {
    return std::tuple(position.file, position.line, position.column);
}

} // namespace

std::uint32_t UseRecorder::numberOf(Id const& owner) {
    if (owner == lastOwner_ && !uses_.empty()) return lastNumber_;
    auto const [entry, isNew] = numbers_.try_emplace(owner, static_cast<std::uint32_t>(uses_.size()));
    if (isNew) uses_.emplace_back().owner = owner;
    lastOwner_ = owner;
    lastNumber_ = entry->second;
    return lastNumber_;
}

void UseRecorder::add(Id const& owner, UseKind kind, Id const& target) {
    if (!isWanted_ || owner.is_nil() || target.is_nil()) return;
    std::uint32_t const number = numberOf(owner);
    if (!isKnown(number, kind, target)) uses_[number].of(kind).push_back(target);
}

// Nearly all lists are short, and to go through one costs less than any table, which would hold some hundred
// thousand uses of a large unit.
bool UseRecorder::isKnown(std::uint32_t owner, UseKind kind, Id const& target) {
    std::vector<Id> const& list = uses_[owner].of(kind);
    if (list.size() < longList) return std::find(list.begin(), list.end(), target) != list.end();
    auto const [entry, isNew] = known_.try_emplace({owner, kind});
    if (isNew) entry->second.insert(list.begin(), list.end());
    return !entry->second.insert(target).second;
}

void UseRecorder::addPointer(Id const& owner, Id const& pointer, Id const& target) {
    if (!isWanted_ || owner.is_nil() || pointer.is_nil() || target.is_nil()) return;
    if (knownPointers_.emplace(owner, pointer, target).second)
        usesOf(owner).pointers.push_back({pointer, target});
}

void UseRecorder::addBody(Id const& owner) {
    if (isWanted_ && !owner.is_nil()) usesOf(owner).hasBody = true;
}

void UseRecorder::addAssembler(Id const& owner) {
    if (isWanted_ && !owner.is_nil()) usesOf(owner).hasAssembler = true;
}

void UseRecorder::addOverride(Id const& method, Id const& overridden) {
    if (!isWanted_ || method.is_nil() || overridden.is_nil()) return;
    if (knownOverrides_.emplace(method, overridden).second) overrides_.push_back({method, overridden});
}

void UseRecorder::addExtent(Id const& owner, Range const& extent) {
    if (isWanted_) extents_.push_back({extent, owner});
}

// Both in the order of the text, so that the extents around a use are a stack.
void UseRecorder::assignMacros(std::vector<MacroUse> const& uses) {
    std::vector<MacroUse> sorted = uses;
    std::stable_sort(sorted.begin(), sorted.end(), [](MacroUse const& a, MacroUse const& b) {
        return orderOf(a.place) < orderOf(b.place);
    });
    std::stable_sort(extents_.begin(), extents_.end(), [](Extent const& a, Extent const& b) {
        return std::pair(orderOf(a.range.start), orderOf(b.range.end)) <
               std::pair(orderOf(b.range.start), orderOf(a.range.end));
    });
    std::vector<Extent const*> around;
    auto next = extents_.cbegin();
    for (MacroUse const& use : sorted) {
        for (; next != extents_.cend() && orderOf(next->range.start) <= orderOf(use.place); ++next)
            around.push_back(&*next);
        // What a macro defines begins and ends where the macro is used.
        std::erase_if(around, [&](Extent const* extent) {
            return orderOf(extent->range.end) < orderOf(use.place) && extent->range.start != use.place;
        });
        for (auto extent = around.crbegin(); extent != around.crend(); ++extent) {
            if ((*extent)->range != around.back()->range) break;
            add((*extent)->owner, UseKind::Macro, use.macro);
        }
    }
}

void UseRecorder::finish(UnitFacts& facts) {
    if (!isWanted_) return;
    assignMacros(facts.macroUses);
    facts.uses.assign(std::make_move_iterator(uses_.begin()), std::make_move_iterator(uses_.end()));
    facts.overrides = std::move(overrides_);
}

} // namespace zelkor::producer
