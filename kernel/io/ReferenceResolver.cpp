#include "ReferenceResolver.hpp"

#include "NearName.hpp"
#include "brant/zero/ReferenceSequence.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

namespace brant::zero::io {

namespace {

constexpr std::size_t ahead = 16; // memory is asked for this many steps before it is used

std::uint64_t hashOf(uuid const& identity) noexcept {
    std::uint64_t low;
    std::uint64_t high;
    std::memcpy(&low, identity.data, 8);
    std::memcpy(&high, identity.data + 8, 8);
    std::uint64_t const mixed = (low ^ (high * 0x9e3779b97f4a7c15ull)) * 0xc6a4a7935bd1e995ull;
    return mixed ^ (mixed >> 32);
}

} // namespace

void ReferenceResolver::index() {
    std::vector<ModelElementImpl*> const& elements = reader_.model_.elements();
    slots_.assign(std::bit_ceil(elements.size() + elements.size() / 2 + 2), Slot{0, 0});
    std::size_t const mask = slots_.size() - 1;
    // Elements that were there before come first in the list: of two with one identity the later one is at
    // fault.
    std::uint64_t hashes[ahead];
    for (std::size_t i = 0; i < elements.size() + ahead; ++i) {
        if (i >= ahead) {
            std::size_t const present = i - ahead;
            std::uint64_t const hash = hashes[present % ahead];
            auto const tag = static_cast<std::uint32_t>(hash >> 32);
            std::size_t at = hash & mask;
            for (; slots_[at].number != 0; at = (at + 1) & mask)
                if (present >= reader_.firstElement_ && slots_[at].tag == tag &&
                    elements[slots_[at].number - 1]->uuid() == elements[present]->uuid())
                    reader_.failAt(reader_.begins_[present - reader_.firstElement_],
                                   "the identity " + toString(elements[present]->uuid()) +
                                       " is that of an earlier element",
                                   "each identity once");
            slots_[at] = {tag, static_cast<std::uint32_t>(present + 1)};
        }
        if (i < elements.size()) {
            hashes[i % ahead] = hashOf(elements[i]->uuid());
            __builtin_prefetch(&slots_[hashes[i % ahead] & mask], 1);
        }
    }
}

ModelElementImpl* ReferenceResolver::find(uuid const& identity) const noexcept {
    std::vector<ModelElementImpl*> const& elements = reader_.model_.elements();
    std::uint64_t const hash = hashOf(identity);
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t at = hash & mask; slots_[at].number != 0; at = (at + 1) & mask)
        if (slots_[at].tag == static_cast<std::uint32_t>(hash >> 32))
            if (ModelElementImpl* element = elements[slots_[at].number - 1]; element->uuid() == identity)
                return element;
    return nullptr;
}

ModelElementImpl& ReferenceResolver::targetOf(OpenReference const& reference) const {
    ModelElementImpl* target = find(reference.target);
    schema::PropertyRow const& row = *reference.field->row;
    auto const property = [&] {
        return quote(std::string(reference.owner->classTable().shortName) + "." + row.name);
    };
    if (target == nullptr)
        reader_.failAt(reference.position,
                       property() + " refers to " + toString(reference.target) +
                           ", which the text does not hold",
                       "the identity of an element, or a placeholder for one elsewhere");
    if (!target->classTable().conformsTo(*row.target))
        reader_.failAt(reference.position,
                       property() + " refers to " + toString(reference.target) + ", which is of the class " +
                           quote(target->classTable().shortName),
                       "an element of the class " + quote(row.target->shortName));
    return *target;
}

void ReferenceResolver::bind(OpenReference const& reference) {
    ModelElementImpl* target = reference.proxy != nullptr ? reference.proxy : &targetOf(reference);
    switch (reference.field->step) {
    case Step::ReferenceList:
        Core::addReference(*reference.owner, *reference.field->row, target);
        break;
    case Step::ChildList:
        owned_.emplace_back(reference, target);
        break;
    default:
        Core::basicSetReference(*reference.owner, *reference.field->row, target);
    }
}

/// An owning list that names an element which it does not contain, or not in that place: it is made anew,
/// without a word to the elements.
void ReferenceResolver::bindSlots() {
    // References of one list need not follow each other: what stands between them may have such lists, too.
    std::stable_sort(owned_.begin(), owned_.end(), [](auto const& a, auto const& b) {
        return std::pair(a.first.owner, a.first.field->row) < std::pair(b.first.owner, b.first.field->row);
    });
    for (std::size_t i = 0; i < owned_.size();) {
        ModelElementImpl& owner = *owned_[i].first.owner;
        schema::PropertyRow const& row = *owned_[i].first.field->row;
        auto const isHere = [&](std::size_t at) {
            return at < owned_.size() && owned_[at].first.owner == &owner &&
                   owned_[at].first.field->row == &row;
        };
        ReferenceSequence& members = Core::sequence(owner, row);
        std::vector<ModelElement> const nested = members.getAllValuesAndProxies();
        owner._basicClear(&members);
        std::size_t place = 0;
        for (std::size_t next = 0; next < nested.size() || isHere(i); ++place)
            if (isHere(i) && owned_[i].first.slot == place)
                owner._basicAdd(&members, ModelElement(owned_[i++].second));
            else
                owner._basicAdd(&members, nested[next++]);
    }
}

void ReferenceResolver::resolve() {
    index();
    std::vector<OpenReference> const& references = reader_.references_;
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t i = 0; i < references.size(); ++i) {
        if (i + ahead < references.size())
            __builtin_prefetch(&slots_[hashOf(references[i + ahead].target) & mask]);
        bind(references[i]);
    }
    bindSlots();
}

} // namespace brant::zero::io
