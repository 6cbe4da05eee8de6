#include "brant/zero/View.hpp"

#include "brant/zero/Core.hpp"
#include "brant/zero/Standalone.hpp"

namespace brant::zero {

ReferenceSequence* ReferenceView::parent() const noexcept {
    return owner() == nullptr ? nullptr : &Core::sequence(*owner(), *row().related);
}

std::size_t ReferenceView::parentSize() const noexcept {
    ReferenceSequence const* const members = parent();
    return members == nullptr ? 0 : members->size();
}

ModelElementImpl* ReferenceView::parentSlot(std::size_t index) const noexcept {
    return parent()->slot(index);
}

void ReferenceView::setFilter(Filter filter) {
    filter_ = filter ? std::make_unique<Filter>(std::move(filter)) : nullptr;
}

bool ReferenceView::accepts(ModelElementImpl const& element) const {
    return filter_ == nullptr || (*filter_)(element.This());
}

std::size_t ReferenceView::nextMatch(std::size_t index) const {
    ReferenceSequence const* const members = parent();
    std::size_t const end = parentSize();
    schema::ClassTable const& target = *row().target;
    for (; index < end; ++index) {
        ModelElementImpl const* const element = members->resolved(index);
        if (element->classTable().conformsTo(target) && accepts(*element)) break;
    }
    return index;
}

// Reading.

std::size_t ReferenceView::size() const {
    std::size_t count = 0;
    for (std::size_t i = nextMatch(0); i < parentSize(); i = nextMatch(i + 1))
        ++count;
    return count;
}

bool ReferenceView::empty() const {
    return nextMatch(0) >= parentSize();
}

std::vector<ModelElement> ReferenceView::getAllValues() const {
    std::vector<ModelElement> values;
    values.reserve(size());
    for (std::size_t i = nextMatch(0); i < parentSize(); i = nextMatch(i + 1))
        values.emplace_back(parentSlot(i));
    return values;
}

bool ReferenceView::genericContains(ModelElement const& element) const {
    return element && conforms(element) && accepts(*element.get()) && parent() != nullptr &&
           parent()->findResolving(element.get()) != ReferenceSequence::npos;
}

void ReferenceView::replaceProxy(ModelElement const& element, unsigned long index) {
    if (ReferenceSequence* const members = parent()) members->replaceProxy(element, index);
}

void ReferenceView::resolveAll() {
    if (ReferenceSequence* const members = parent()) members->resolveAll();
}

void ReferenceView::resolveLocal() {
    if (ReferenceSequence* const members = parent()) members->resolveLocal();
}

// Changes, all of them the parent's.

void ReferenceView::addOne(ModelElementImpl* element) {
    if (element == nullptr || !element->valid() || parent() == nullptr) return;
    if (!element->classTable().conformsTo(*row().target) || !accepts(*element))
        reportException(brant0::messages::CannotAddIncompatibleObjectSubset());
    parent()->addOne(element);
}

void ReferenceView::removeOne(ModelElementImpl* element) {
    if (ReferenceSequence* const members = parent()) members->removeOne(element);
}

void ReferenceView::genericAdd(ModelElement const& element) {
    if (!element) return;
    requireConforming(element);
    addOne(element.get());
}

void ReferenceView::genericRemove(ModelElement const& element) {
    if (!element) return;
    requireConforming(element);
    removeOne(element.get());
}

void ReferenceView::genericClear() {
    std::vector<std::size_t> positions;
    for (std::size_t i = nextMatch(0); i < parentSize(); i = nextMatch(i + 1))
        positions.push_back(i);
    if (!positions.empty()) parent()->eraseEach(positions);
}

std::unique_ptr<AbstractOwnedCollection> ReferenceView::snapshot() const {
    // What a view shows is in the snapshot of its parent.
    return std::make_unique<Standalone<ReferenceView>>(nullptr, row());
}

} // namespace brant::zero
