/// \file
/// The ordered collection of elements, without its element type.
#pragma once

#include "brant/zero/Collection.hpp"

#include <cstdint>
#include <iterator>
#include <vector>

namespace brant::zero {

/// An ordered collection of counted references.
///
/// One word when empty; otherwise one block whose front and back both grow and shrink in constant time.
/// Members of an owning sequence carry an order key, so that finding one needs no scan: adding, and removing
/// in order or in reverse, is constant time; removing at random moves a part of the block. A slot may hold a
/// placeholder, which is replaced by its target when it is touched and the target is there.
class ZELKOR_API ReferenceSequence : public GenericSequenceInterface {
  public:
    ~ReferenceSequence() override;

    [[nodiscard]] std::size_t size() const noexcept { return block_ == nullptr ? 0 : block_->size; }
    /// Placeholders count.
    [[nodiscard]] bool empty() const override { return size() == 0; }
    [[nodiscard]] std::size_t heapBytes() const noexcept override {
        return block_ == nullptr ? 0 : sizeof(Block) + block_->capacity * sizeof(ModelElementImpl*);
    }
    [[nodiscard]] std::vector<ModelElement> getAllValues() const override;
    [[nodiscard]] std::vector<ModelElement> getAllValuesAndProxies() const override;
    void replaceProxy(ModelElement const& element, unsigned long index) override;
    void resolveAll() override;
    void resolveLocal() override;

    [[nodiscard]] std::size_t genericSize() const override { return size(); }
    void genericAdd(ModelElement const& element) override;
    void genericEnsureAt(ModelElement const& element, unsigned long index) override;
    void genericRemove(ModelElement const& element) override;
    void genericClear() override;
    [[nodiscard]] bool genericContains(ModelElement const& element) const override;
    [[nodiscard]] ModelElement genericAt(unsigned long index) const override;
    void genericInsert(ModelElement const& element, unsigned long index) override;
    void genericReplace(ModelElement const& element, unsigned long index) override;
    void genericRemoveAt(unsigned long index) override;
    [[nodiscard]] std::uint32_t genericIndexOf(ModelElement const& element) const override;

    /// The slot as it stands, without a count and without resolving. \requires index < size().
    [[nodiscard]] ModelElementImpl* slot(std::size_t index) const noexcept { return block_->items()[index]; }
    /// All slots as they stand; invalidated by any change.
    [[nodiscard]] ModelElementImpl* const* slots() const noexcept {
        return block_ == nullptr ? nullptr : block_->items();
    }
    /// The slot, resolved in place if it holds a placeholder whose target is there. \requires index < size().
    [[nodiscard]] ModelElementImpl* resolved(std::size_t index) const;
    void reserve(std::size_t count);
    /// \returns whether the members are found by their order keys.
    [[nodiscard]] bool orderedByKey() const noexcept {
        return block_ != nullptr && !block_->irregular && keepsOrder();
    }
    /// \returns whether a member is found: by key where the collection trusts its keys, else by a scan.
    [[nodiscard]] bool findForVerify(ModelElementImpl const* element) const noexcept {
        return find(element) != npos;
    }

  protected:
    friend struct Core;
    friend class ReferenceView;

    ReferenceSequence() noexcept = default;

    // The algorithms behind the typed and the generic operations. Null bodies stand for null handles.
    void addOne(ModelElementImpl* element);
    /// \returns the position where the element stands afterwards.
    std::size_t insertOne(std::size_t index, ModelElementImpl* element);
    void removeOne(ModelElementImpl* element);
    void eraseAt(std::size_t index);
    void eraseRange(std::size_t first, std::size_t last);
    /// Erases the elements at these ascending positions. Linear in the size.
    void eraseEach(std::vector<std::size_t> const& positions);
    void replaceAt(std::size_t index, ModelElementImpl* element);
    [[nodiscard]] bool containsOne(ModelElementImpl const* element) const;

    void basicAdd(ModelElement const& element) override;
    void basicRemove(ModelElement const& element) override;
    void basicClear() override;
    void basicCopyValues(ReferenceCollection const& other) override;
    bool basicContainsProxyTo(ModelElement const& element) override;
    void basicReplace(std::size_t index, ModelElement const& element);

  private:
    /// The slots, behind their bookkeeping. `head` free slots stand before the first used one.
    struct Block {
        std::uint32_t size;
        std::uint32_t capacity;
        std::uint32_t head;
        bool irregular; ///< order keys cannot be trusted: a repeated, dead, left-over or placeholder entry
        ModelElementImpl** items() noexcept { return reinterpret_cast<ModelElementImpl**>(this + 1) + head; }
        ModelElementImpl* const* items() const noexcept { return const_cast<Block*>(this)->items(); }
    };
    static constexpr std::size_t npos = ~std::size_t{0};
    static constexpr std::uint32_t orderStep = 64;

    void undo(UndoEntry& entry) noexcept override;
    void discard(UndoEntry& entry) noexcept override;
    [[nodiscard]] std::unique_ptr<AbstractOwnedCollection> snapshot() const override;
    void applyInverse(UndoEntry const& entry) override;
    void dropContents() noexcept override;

    // Raw steps on the block: counts and order keys, no records, no upkeep.
    void makeRoom(std::size_t index, bool mayGrow = true);
    void rawInsert(std::size_t index, ModelElementImpl* element);         ///< takes over a count
    [[nodiscard]] ModelElementImpl* rawErase(std::size_t index) noexcept; ///< the caller takes over the count
    static void freeBlock(Block* block) noexcept;
    /// Appends what `owner`, whose field this is, holds through it already: `recordedInsert` without its
    /// questions.
    void appendHeld(ModelElementImpl const& owner, ModelElementImpl* element);
    static Block* allocateBlock(std::size_t capacity);
    static std::size_t bytesOf(std::size_t capacity) noexcept;
    static void releaseBlock(Block* block) noexcept; ///< its memory only
    void giveOrder(std::size_t index, ModelElementImpl* element);
    void spread(std::size_t index);
    void renumber();
    void settleOrder() noexcept;
    void grow(bool inFront);
    void slide(std::size_t head) noexcept;
    [[nodiscard]] bool orderFits(std::size_t index) const noexcept;
    void resetContents(Block* block) noexcept;
    [[nodiscard]] static Block* copyOf(Block const* block);

    /// \returns the first position of the very element, or `npos`; by order key where the element is held
    /// here.
    [[nodiscard]] std::size_t find(ModelElementImpl const* element) const noexcept;
    /// As `find`, but placeholders on the way become their targets.
    [[nodiscard]] std::size_t findResolving(ModelElementImpl const* element);
    [[nodiscard]] std::size_t findByOrder(ModelElementImpl const* element) const noexcept;
    [[nodiscard]] bool keepsOrder() const noexcept;

    void recordedInsert(std::size_t index, ModelElementImpl* element, bool irregular = false);
    void recordedErase(std::size_t index);
    void recordedStore(std::size_t index, ModelElementImpl* element, bool irregular);
    void recordedSwap(std::size_t a, std::size_t b);
    /// Takes all content out, recorded. \returns a copy of it for as long as the caller needs it.
    std::vector<ModelElement> recordedClear();
    /// The same for the elements at these ascending positions.
    std::vector<ModelElement> recordedErase(std::vector<std::size_t> const& positions);
    [[nodiscard]] bool holds(ModelElementImpl const& element) const noexcept;
    void swapSlots(std::size_t a, std::size_t b) noexcept;

    Block* block_ = nullptr;
};

} // namespace brant::zero
