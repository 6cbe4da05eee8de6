#include "ChangeCollector.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"

namespace brant::zero {

bool ChangeCollector::isCreated(ModelElementImpl const& element) const noexcept {
    std::uint32_t const slot = Core::createdSlot(element);
    return slot < created_.size() && created_[slot] == &element;
}

Storage& ChangeCollector::recordFor(ModelElementImpl& element) {
    std::shared_ptr<Storage>& record = records_[&element];
    if (record == nullptr) {
        record = element.createStorage();
        record->log_ = log_;
        order_.push_back(&element);
    }
    return *record;
}

void ChangeCollector::addElementStep(UndoEntry const& entry) {
    ModelElementImpl& element = *entry.element;
    if (entry.op == UndoOp::Destroyed) {
        recordFor(element);
        destroyed_.push_back(&element);
        return;
    }
    if (entry.op == UndoOp::Link) {
        addLink(entry);
        return;
    }
    Storage& record = recordFor(element);
    // The first step holds the value at the start; later ones are of no interest.
    if (record.changed(entry.row->index)) return;
    record.mark(entry.row->index);
    Storage::Old& old = record.slot(*entry.row);
    switch (entry.op) {
    case UndoOp::StdText:
        old.value = *entry.pointer<std::string>();
        break;
    case UndoOp::Text:
        old.value = *entry.pointer<std::u16string>();
        break;
    case UndoOp::Reference:
        old.value = ModelElement(entry.pointer<ModelElementImpl>());
        break;
    default:
        old.value = entry.payload;
    }
}

void ChangeCollector::addLink(UndoEntry const& entry) {
    ModelElementImpl& element = *entry.element;
    Storage& record = recordFor(element);
    if (!record.containerTouched_) {
        record.containerTouched_ = true;
        record.oldContainer_ = ModelElement(entry.pointer<ModelElementImpl>());
        record.oldFeature_ = entry.row;
    }
    record.mark(0);
    // The end that is left and the end that is entered both changed, as far as the child knows of them.
    for (schema::PropertyRow const* feature : {entry.row, element.containmentRow()})
        if (feature != nullptr && feature->opposite != nullptr) record.mark(feature->opposite->index);
}

void ChangeCollector::addCollectionStep(std::size_t index, UndoEntry const& entry) {
    ModelElementImpl& owner = *entry.collection->owner();
    Storage& record = recordFor(owner);
    record.mark(entry.row->index);
    Storage::Old& old = record.slot(*entry.row);
    old.live = entry.collection;
    if (entry.op != UndoOp::Touch) old.steps.push_back(index);
}

void ChangeCollector::collect(ModelElementImpl const* only) {
    for (std::size_t i = 0; i < log_->size(); ++i) {
        UndoEntry const& entry = (*log_)[i];
        if (entry.onCollection() && entry.collection == nullptr) continue;
        ModelElementImpl* subject = entry.onCollection() ? entry.collection->owner() : entry.element;
        if ((only != nullptr && subject != only) || isCreated(*subject)) continue;
        if (entry.onCollection())
            addCollectionStep(i, entry);
        else
            addElementStep(entry);
    }
}

void ChangeCollector::recordRest(ModelElementImpl& element) {
    // Destruction leaves the plain values in the body; the notice is the last place where they can be read.
    Storage& record = recordFor(element);
    schema::ClassTable const& table = element.classTable();
    for (std::size_t i = 1; i < table.count; ++i) {
        if (record.changed(i) || table.stored[i]->kind == schema::PropertyKind::ContainerEnd) continue;
        record.copyFrom(element, *table.stored[i]);
        record.mark(i);
    }
}

CommitNotice ChangeCollector::notice() {
    collect(nullptr);
    CommitNotice notice;
    for (ModelElementImpl* element : created_)
        if (element != nullptr && element->valid() && !Core::isSilent(*element))
            notice.created.emplace_back(element);
    for (ModelElementImpl* element : destroyed_) {
        recordRest(*element);
        notice.destroyed.emplace_back(ModelElement(element), records_[element]);
    }
    for (ModelElementImpl* element : order_) {
        if (!element->valid()) continue;
        std::shared_ptr<Storage> const& record = records_[element];
        record->revertUnchanged(element);
        if (record->bits().any()) notice.changed.emplace_back(ModelElement(element), record);
    }
    return notice;
}

std::shared_ptr<Storage> ChangeCollector::storageOf(ModelElementImpl& element) {
    collect(&element);
    auto const found = records_.find(&element);
    if (found == records_.end()) return nullptr;
    found->second->buildAll();
    found->second->close();
    return found->second;
}

} // namespace brant::zero
