/// The open levels of one model and what must be known to abandon them.
#pragma once

#include "UndoLog.hpp"
#include "brant/zero/Model.hpp"

#include <memory>
#include <vector>

namespace brant::zero {

/// Levels are marks on one undo log and on the list of created elements. Committing an inner level removes
/// its mark, so that its steps belong to the level around it; abandoning one takes the steps behind its mark
/// back, last first. An element created behind the current level's mark needs no records: it goes away whole.
class TransactionCoordinator {
  public:
    explicit TransactionCoordinator(ModelImpl& model) : model_(model), log_(std::make_shared<UndoLog>()) {}
    TransactionCoordinator(TransactionCoordinator const&) = delete;
    TransactionCoordinator& operator=(TransactionCoordinator const&) = delete;

    [[nodiscard]] std::size_t depth() const noexcept { return levels_.size(); }
    /// \returns a number that names the new level and no other one, never 0. \throws std::logic_error for a
    /// frozen model.
    std::size_t begin();
    /// \throws std::logic_error unless `level` is the innermost one.
    void requireInnermost(std::size_t level) const;
    /// \throws std::logic_error unless `level` is the innermost one; what a commit callback threw.
    void commit(std::size_t level);
    /// Abandons the level and all levels inside it. Does nothing when it has ended.
    void abandon(std::size_t level) noexcept;

    [[nodiscard]] bool records(ModelElementImpl const& element) const noexcept {
        return !levels_.empty() && !restoring_ && (element.state_ & ModelElementImpl::Announced) != 0 &&
               !createdHere(element);
    }
    [[nodiscard]] bool restoring() const noexcept { return restoring_; }
    /// \returns the log, ready to take one more entry.
    [[nodiscard]] UndoLog& log() {
        log_->prepare();
        return *log_;
    }
    /// \returns whether the running transaction created the element.
    [[nodiscard]] bool createdInside(ModelElementImpl const& element) const noexcept {
        std::uint32_t const slot = element.createdSlot_;
        return slot < created_.size() && created_[slot] == &element;
    }
    void addCreated(ModelElementImpl& element);
    void dropCreated(ModelElementImpl& element) noexcept;
    /// Drops the records about a collection that dies before the transaction ends.
    void forget(AbstractOwnedCollection const& collection) noexcept;
    /// \returns the old values of an element as of the start of the outermost open level, or null if it is
    /// unchanged.
    [[nodiscard]] std::shared_ptr<Storage> storageOf(ModelElementImpl& element) const;

  private:
    struct Mark {
        std::size_t log;
        std::size_t created;
        std::size_t number;
    };
    /// \returns the place of an open level, or the depth when it has ended.
    [[nodiscard]] std::size_t placeOf(std::size_t level) const noexcept;
    [[nodiscard]] bool createdHere(ModelElementImpl const& element) const noexcept {
        return element.createdSlot_ >= levels_.back().created && createdInside(element);
    }
    [[nodiscard]] bool goesWith(UndoEntry const& entry, Mark const& mark) const noexcept;
    /// Drops the last steps of a level that was merged outward, down to `first`, as far as they are about
    /// elements that go away whole with the level around it.
    void dropNeedless(std::size_t first) noexcept;
    void undo(UndoEntry& entry) noexcept;
    void undoElement(UndoEntry& entry) noexcept;
    void vanish(ModelElementImpl& element) noexcept;
    void finish();

    ModelImpl& model_;
    std::vector<Mark> levels_;
    std::size_t lastNumber_ = 0;
    std::shared_ptr<UndoLog> log_;
    std::vector<ModelElementImpl*> created_;
    bool restoring_ = false;
};

} // namespace brant::zero
