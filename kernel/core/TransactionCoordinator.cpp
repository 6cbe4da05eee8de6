#include "TransactionCoordinator.hpp"

#include "ChangeCollector.hpp"
#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Storage.hpp"

#include <stdexcept>

namespace brant::zero {

void UndoLog::clear() noexcept {
    for (UndoEntry& entry : entries_)
        discard(entry);
    clearKeepingLittle(entries_);
}

void UndoLog::discard(UndoEntry& entry) noexcept {
    switch (entry.op) {
    case UndoOp::StdText:
        delete entry.pointer<std::string>();
        break;
    case UndoOp::Text:
        delete entry.pointer<std::u16string>();
        break;
    case UndoOp::Reference:
        if (auto* target = entry.pointer<ModelElementImpl>()) target->removeRef();
        break;
    case UndoOp::Destroyed:
        entry.element->removeRef();
        break;
    case UndoOp::Bits:
    case UndoOp::Link:
    case UndoOp::Touch:
        break;
    default:
        if (entry.collection != nullptr) entry.collection->discard(entry);
    }
}

std::size_t TransactionCoordinator::begin() {
    if (!model_.writable()) throw std::logic_error("the model is frozen and cannot be changed");
    model_.settleNotices();
    levels_.push_back({log_->size(), created_.size(), ++lastNumber_});
    return lastNumber_;
}

std::size_t TransactionCoordinator::placeOf(std::size_t level) const noexcept {
    std::size_t place = levels_.size();
    while (place > 0 && levels_[place - 1].number > level)
        --place;
    return place > 0 && levels_[place - 1].number == level ? place - 1 : levels_.size();
}

void TransactionCoordinator::requireInnermost(std::size_t level) const {
    std::size_t const place = placeOf(level);
    if (place == levels_.size())
        throw std::logic_error("a transaction was committed after the one around it had ended");
    if (place + 1 != levels_.size())
        throw std::logic_error("a transaction was committed while one inside it is still open");
}

void TransactionCoordinator::commit(std::size_t level) {
    requireInnermost(level);
    if (levels_.size() == 1) {
        finish();
        return;
    }
    std::size_t const first = levels_.back().log;
    levels_.pop_back();
    dropNeedless(first);
}

void TransactionCoordinator::dropNeedless(std::size_t first) noexcept {
    while (log_->size() > first) {
        UndoEntry& entry = (*log_)[log_->size() - 1];
        if (entry.op == UndoOp::Destroyed || (entry.onCollection() && entry.collection == nullptr)) break;
        ModelElementImpl const* const subject =
            entry.onCollection() ? entry.collection->owner() : entry.element;
        if (!createdHere(*subject)) break;
        UndoLog::discard(entry);
        log_->pop();
    }
}

void TransactionCoordinator::finish() {
    bool const changed = !log_->empty() || !created_.empty();
    if (changed && model_.observed()) {
        CommitNotice notice = ChangeCollector(log_, created_).notice();
        log_ = std::make_shared<UndoLog>();
        clearKeepingLittle(created_);
        levels_.clear();
        model_.settle();
        if (!notice.created.empty() || !notice.changed.empty() || !notice.destroyed.empty())
            model_.deliver(std::move(notice));
        return;
    }
    levels_.clear();
    clearKeepingLittle(created_);
    log_->clear();
    model_.settle();
}

void TransactionCoordinator::abandon(std::size_t level) noexcept {
    std::size_t const place = placeOf(level);
    if (place == levels_.size()) return;
    Mark const mark = levels_[place];
    restoring_ = true;
    while (log_->size() > mark.log) {
        UndoEntry entry = (*log_)[log_->size() - 1];
        log_->pop();
        if (goesWith(entry, mark))
            UndoLog::discard(entry);
        else
            undo(entry);
    }
    while (created_.size() > mark.created) {
        ModelElementImpl* element = created_.back();
        created_.pop_back();
        if (element != nullptr) vanish(*element);
    }
    restoring_ = false;
    levels_.resize(place);
    if (levels_.empty()) model_.settle();
}

bool TransactionCoordinator::goesWith(UndoEntry const& entry, Mark const& mark) const noexcept {
    // A collection of an element made in the abandoned level goes away whole. Its steps cannot be taken back
    // one by one, since those made right in the level were not recorded.
    if (!entry.onCollection() || entry.collection == nullptr) return false;
    ModelElementImpl const& owner = *entry.collection->owner();
    return owner.createdSlot_ >= mark.created && createdInside(owner);
}

void TransactionCoordinator::undo(UndoEntry& entry) noexcept {
    if (!entry.onCollection())
        undoElement(entry);
    else if (entry.op != UndoOp::Touch && entry.collection != nullptr)
        entry.collection->undo(entry);
}

void TransactionCoordinator::undoElement(UndoEntry& entry) noexcept {
    ModelElementImpl& element = *entry.element;
    switch (entry.op) {
    case UndoOp::Bits:
        Core::restoreBits(element, *entry.row, entry.payload);
        break;
    case UndoOp::StdText: {
        std::unique_ptr<std::string> text(entry.pointer<std::string>());
        Core::field<std::string>(element, *entry.row).swap(*text);
        break;
    }
    case UndoOp::Text: {
        std::unique_ptr<std::u16string> text(entry.pointer<std::u16string>());
        Core::field<std::u16string>(element, *entry.row).swap(*text);
        break;
    }
    case UndoOp::Reference: {
        ModelElementImpl*& field = Core::field<ModelElementImpl*>(element, *entry.row);
        ModelElementImpl* present = std::exchange(field, entry.pointer<ModelElementImpl>());
        if (present != nullptr) present->removeRef();
        break;
    }
    case UndoOp::Link:
        Core::restoreLink(element, entry.pointer<ModelElementImpl>(), entry.row, entry.position);
        break;
    case UndoOp::Destroyed:
        // The entry's count becomes the model's.
        element.valid_ = true;
        element.liveness_ = Liveness::Alive;
        model_.reenter(element);
        break;
    default:
        break;
    }
}

void TransactionCoordinator::vanish(ModelElementImpl& element) noexcept {
    if (element.container_ == nullptr && element.valid_) model_.leaveTopLevel(element);
    element.valid_ = false;
    element.liveness_ = Liveness::RolledBack;
    element.container_ = nullptr;
    element.feature_ = nullptr;
    Core::dropLinks(element);
    model_.leave(element);
}

void TransactionCoordinator::addCreated(ModelElementImpl& element) {
    if (levels_.empty()) throw std::logic_error("an element was announced outside a transaction");
    created_.push_back(&element);
    element.createdSlot_ = static_cast<std::uint32_t>(created_.size() - 1);
}

void TransactionCoordinator::dropCreated(ModelElementImpl& element) noexcept {
    if (createdInside(element)) created_[element.createdSlot_] = nullptr;
}

void TransactionCoordinator::forget(AbstractOwnedCollection const& collection) noexcept {
    for (std::size_t i = 0; i < log_->size(); ++i) {
        UndoEntry& entry = (*log_)[i];
        if (entry.onCollection() && entry.collection == &collection) {
            UndoLog::discard(entry);
            entry.op = UndoOp::Touch;
            entry.collection = nullptr;
        }
    }
}

std::shared_ptr<Storage> TransactionCoordinator::storageOf(ModelElementImpl& element) const {
    return levels_.empty() ? nullptr : ChangeCollector(log_, created_).storageOf(element);
}

} // namespace brant::zero
