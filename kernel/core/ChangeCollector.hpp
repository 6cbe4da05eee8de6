/// Reads the undo log of a transaction as "what changed": one record per element, old values where asked.
#pragma once

#include "UndoLog.hpp"
#include "brant/zero/Model.hpp"
#include "brant/zero/Storage.hpp"

#include <memory>
#include <unordered_map>
#include <vector>

namespace brant::zero {

class ChangeCollector {
  public:
    ChangeCollector(std::shared_ptr<UndoLog> log, std::vector<ModelElementImpl*> const& created)
        : log_(std::move(log)), created_(created) {}

    /// \returns what the whole log did.
    [[nodiscard]] CommitNotice notice();
    /// \returns the record of one element with all old values built, or null when it did not change.
    [[nodiscard]] std::shared_ptr<Storage> storageOf(ModelElementImpl& element);

  private:
    void collect(ModelElementImpl const* only);
    void addElementStep(UndoEntry const& entry);
    void addCollectionStep(std::size_t index, UndoEntry const& entry);
    void recordRest(ModelElementImpl& element);
    void addLink(UndoEntry const& entry);
    Storage& recordFor(ModelElementImpl& element);
    [[nodiscard]] bool isCreated(ModelElementImpl const& element) const noexcept;

    std::shared_ptr<UndoLog> log_;
    std::vector<ModelElementImpl*> const& created_;
    std::unordered_map<ModelElementImpl*, std::shared_ptr<Storage>> records_;
    std::vector<ModelElementImpl*> order_;
    std::vector<ModelElementImpl*> destroyed_;
};

} // namespace brant::zero
