// The block behind a sequence: raw steps, order keys, and taking recorded steps back.

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Slab.hpp"
#include "brant/zero/Standalone.hpp"

#include <algorithm>
#include <cstring>
#include <new>

namespace brant::zero {

namespace {
constexpr std::uint32_t firstOrder = 1u << 20; // room for inserts at the front
}

std::size_t ReferenceSequence::bytesOf(std::size_t capacity) noexcept {
    return sizeof(Block) + capacity * sizeof(ModelElementImpl*);
}

void ReferenceSequence::releaseBlock(Block* block) noexcept {
    slab::deallocate(block, bytesOf(block->capacity));
}

ReferenceSequence::Block* ReferenceSequence::allocateBlock(std::size_t capacity) {
    auto* block = static_cast<Block*>(slab::allocate(bytesOf(capacity)));
    *block = {0, static_cast<std::uint32_t>(capacity), 0, false};
    return block;
}

void ReferenceSequence::freeBlock(Block* block) noexcept {
    if (block == nullptr) return;
    for (std::uint32_t i = 0; i < block->size; ++i)
        block->items()[i]->removeRef();
    releaseBlock(block);
}

ReferenceSequence::Block* ReferenceSequence::copyOf(Block const* block) {
    if (block == nullptr) return nullptr;
    Block* copy = allocateBlock(block->size);
    copy->irregular = block->irregular;
    for (std::uint32_t i = 0; i < block->size; ++i) {
        block->items()[i]->addRef();
        copy->items()[i] = block->items()[i];
    }
    copy->size = block->size;
    return copy;
}

void ReferenceSequence::reserve(std::size_t count) {
    if (block_ != nullptr && block_->capacity - block_->head >= count) return;
    Block* grown = allocateBlock(count);
    if (block_ != nullptr) {
        grown->irregular = block_->irregular;
        grown->size = block_->size;
        std::memcpy(grown->items(), block_->items(), block_->size * sizeof(ModelElementImpl*));
        releaseBlock(block_);
    }
    block_ = grown;
}

/// Gives the block more capacity, with the new room in front of the first slot or behind the last one.
void ReferenceSequence::grow(bool inFront) {
    std::size_t const size = block_->size;
    Block* grown = allocateBlock(size * 2 + 1);
    grown->irregular = block_->irregular;
    grown->head = inFront ? static_cast<std::uint32_t>(size + 1) : 0;
    grown->size = block_->size;
    std::memcpy(grown->items(), block_->items(), size * sizeof(ModelElementImpl*));
    releaseBlock(block_);
    block_ = grown;
}

/// Moves the slots inside the block, so that `head` free ones stand before them.
void ReferenceSequence::slide(std::size_t head) noexcept {
    ModelElementImpl** const items = block_->items();
    block_->head = static_cast<std::uint32_t>(head);
    std::memmove(block_->items(), items, block_->size * sizeof(*items));
}

/// Opens a gap of one slot at `index`, on the cheaper side. A side without room gets some: from the other
/// side when that has plenty, so that it lasts for as many steps as the move costs, else from a larger block.
void ReferenceSequence::makeRoom(std::size_t index, bool mayGrow) {
    if (block_ == nullptr) block_ = allocateBlock(1);
    std::size_t const behind = block_->size - index;
    std::size_t const spare = block_->capacity - block_->head - block_->size;
    bool inFront = index < behind;
    if (inFront ? block_->head == 0 : spare == 0) {
        std::size_t const other = inFront ? spare : block_->head;
        if (other > block_->size / 2)
            slide(inFront ? (other + 1) / 2 : other / 2);
        else if (mayGrow)
            grow(inFront);
        else
            inFront = !inFront; // there is room on one side
    }
    ModelElementImpl** const items = block_->items();
    if (inFront) {
        std::memmove(items - 1, items, index * sizeof(*items));
        --block_->head;
    } else {
        std::memmove(items + index + 1, items + index, behind * sizeof(*items));
    }
}

void ReferenceSequence::rawInsert(std::size_t index, ModelElementImpl* element) {
    block_->items()[index] = element;
    ++block_->size;
    if (keepsOrder()) giveOrder(index, element);
}

ModelElementImpl* ReferenceSequence::rawErase(std::size_t index) noexcept {
    Block& block = *block_;
    ModelElementImpl** items = block.items();
    ModelElementImpl* element = items[index];
    std::size_t const behind = block.size - index - 1;
    if (index < behind) {
        std::memmove(items + 1, items, index * sizeof(*items));
        ++block.head;
    } else {
        std::memmove(items + index, items + index + 1, behind * sizeof(*items));
    }
    if (--block.size == 0) {
        block.head = 0;
        block.irregular = false;
    }
    return element;
}

bool ReferenceSequence::orderFits(std::size_t index) const noexcept {
    ModelElementImpl* const* const items = block_->items();
    std::uint32_t const order = Core::order(*items[index]);
    return (index == 0 || Core::order(*items[index - 1]) < order) &&
           (index + 1 == block_->size || order < Core::order(*items[index + 1]));
}

void ReferenceSequence::giveOrder(std::size_t index, ModelElementImpl* element) {
    if (block_->irregular) return;
    if (!holds(*element)) {
        block_->irregular = true;
        return;
    }
    if (orderFits(index) && Core::order(*element) >= firstOrder) return; // back at its old place
    ModelElementImpl* const* const items = block_->items();
    std::uint64_t const before = index == 0 ? 0 : Core::order(*items[index - 1]);
    std::uint64_t const after = index + 1 < block_->size
                                    ? Core::order(*items[index + 1])
                                    : (index == 0 ? 2ull * firstOrder : before + 2ull * orderStep);
    std::uint64_t const middle = before + (after - before) / 2;
    if (middle == before || after > ~std::uint32_t{0})
        spread(index);
    else
        Core::order(*element) = static_cast<std::uint32_t>(
            index == 0 && block_->size > 1 && after > orderStep ? after - orderStep : middle);
}

/// Gives new keys to a slot without one and to as many round it as it takes to have gaps again.
void ReferenceSequence::spread(std::size_t index) {
    constexpr std::uint64_t least = orderStep / 4;
    ModelElementImpl* const* const items = block_->items();
    for (std::size_t reach = 8; reach < block_->size; reach *= 2) {
        std::size_t const first = index > reach ? index - reach : 0;
        std::size_t const last = std::min<std::size_t>(index + reach + 1, block_->size);
        std::uint64_t const natural = (last - first + 1) * orderStep;
        std::uint64_t low = first == 0 ? 0 : Core::order(*items[first - 1]);
        std::uint64_t high = last == block_->size ? low + natural : Core::order(*items[last]);
        if (first == 0 && last < block_->size && high > natural) low = high - natural;
        std::uint64_t const step = (high - low) / (last - first + 1);
        if (step < least || high > ~std::uint32_t{0}) continue;
        for (std::size_t i = first; i < last; ++i)
            Core::order(*items[i]) = static_cast<std::uint32_t>(low + (i - first + 1) * step);
        return;
    }
    renumber();
}

void ReferenceSequence::renumber() {
    std::uint64_t const room = (~std::uint32_t{0} - 2ull * firstOrder) / block_->size;
    std::uint64_t const step = std::clamp<std::uint64_t>(room, 1, orderStep);
    for (std::uint32_t i = 0; i < block_->size; ++i)
        Core::order(*block_->items()[i]) = static_cast<std::uint32_t>(firstOrder + i * step);
}

// Recorded steps.

void ReferenceSequence::appendHeld(ModelElementImpl const& owner, ModelElementImpl* element) {
    Block* const block = block_;
    bool const hasRoom = block != nullptr && block->head + block->size < block->capacity;
    std::uint64_t const key = hasRoom && block->size > 0
                                  ? std::uint64_t{Core::order(*block->items()[block->size - 1])} + orderStep
                                  : firstOrder;
    if (!hasRoom || block->irregular || key > ~std::uint32_t{0} || Core::records(owner)) {
        recordedInsert(size(), element);
        return;
    }
    element->addRef();
    block->items()[block->size++] = element;
    Core::order(*element) = static_cast<std::uint32_t>(key);
}

void ReferenceSequence::recordedInsert(std::size_t index, ModelElementImpl* element, bool irregular) {
    index = std::min(index, size());
    UndoLog* log = Core::logFor(*this);
    makeRoom(index);
    if (log != nullptr) log->push(collectionEntry(*this, UndoOp::Insert, index, 0));
    block_->irregular = block_->irregular || irregular;
    element->addRef();
    rawInsert(index, element);
}

void ReferenceSequence::recordedErase(std::size_t index) {
    UndoLog* log = Core::logFor(*this);
    ModelElementImpl* element = rawErase(index);
    if (log != nullptr)
        log->push(collectionEntry(*this, UndoOp::Erase, index, asPayload(element)));
    else
        element->removeRef();
}

void ReferenceSequence::recordedStore(std::size_t index, ModelElementImpl* element, bool irregular) {
    UndoLog* log = Core::logFor(*this);
    element->addRef();
    ModelElementImpl* old = std::exchange(block_->items()[index], element);
    if (!irregular && keepsOrder() && holds(*element) && !block_->irregular && holds(*old))
        Core::order(*element) = Core::order(*old);
    else
        block_->irregular = true;
    if (log != nullptr)
        log->push(collectionEntry(*this, UndoOp::Store, index, asPayload(old)));
    else
        old->removeRef();
}

void ReferenceSequence::recordedSwap(std::size_t a, std::size_t b) {
    if (a == b) return;
    if (UndoLog* log = Core::logFor(*this)) log->push(collectionEntry(*this, UndoOp::Swap, a, b));
    swapSlots(a, b);
}

void ReferenceSequence::swapSlots(std::size_t a, std::size_t b) noexcept {
    ModelElementImpl** items = block_->items();
    std::swap(items[a], items[b]);
    if (keepsOrder() && !block_->irregular) std::swap(Core::order(*items[a]), Core::order(*items[b]));
}

std::vector<ModelElement> ReferenceSequence::recordedClear() {
    std::vector<ModelElement> old = getAllValuesAndProxies();
    if (block_ == nullptr) return old;
    UndoLog* log = Core::logFor(*this);
    Block* block = std::exchange(block_, nullptr);
    if (log != nullptr)
        log->push(collectionEntry(*this, UndoOp::Contents, 0, asPayload(block)));
    else
        freeBlock(block);
    return old;
}

std::vector<ModelElement> ReferenceSequence::recordedErase(std::vector<std::size_t> const& positions) {
    std::vector<ModelElement> gone;
    gone.reserve(positions.size());
    for (std::size_t const position : positions)
        gone.emplace_back(slot(position));
    if (positions.empty()) return gone;
    UndoLog* log = Core::logFor(*this);
    Block* const old = block_;
    Block* const kept = allocateBlock(old->size - positions.size());
    kept->irregular = old->irregular;
    auto next = positions.begin();
    for (std::uint32_t i = 0; i < old->size; ++i) {
        if (next != positions.end() && *next == i) {
            ++next;
            continue;
        }
        old->items()[i]->addRef();
        kept->items()[kept->size++] = old->items()[i];
    }
    block_ = kept;
    if (log != nullptr)
        log->push(collectionEntry(*this, UndoOp::Contents, 0, asPayload(old)));
    else
        freeBlock(old);
    return gone;
}

void ReferenceSequence::resetContents(Block* block) noexcept {
    freeBlock(std::exchange(block_, block));
}

void ReferenceSequence::settleOrder() noexcept {
    // Members that stayed may have got new keys since; keys of the dead come back as they were when they
    // died.
    if (block_ == nullptr || block_->irregular || !keepsOrder()) return;
    for (std::size_t i = 1; i < block_->size; ++i)
        if (Core::order(*slot(i - 1)) >= Core::order(*slot(i))) {
            renumber();
            return;
        }
}

void ReferenceSequence::undo(UndoEntry& entry) noexcept {
    switch (entry.op) {
    case UndoOp::Insert:
        rawErase(entry.position)->removeRef();
        break;
    case UndoOp::Erase:
        makeRoom(entry.position, false); // the room is still there
        rawInsert(entry.position, entry.pointer<ModelElementImpl>());
        break;
    case UndoOp::Store: {
        ModelElementImpl* present =
            std::exchange(block_->items()[entry.position], entry.pointer<ModelElementImpl>());
        if (keepsOrder() && !block_->irregular && !orderFits(entry.position)) block_->irregular = true;
        present->removeRef();
        break;
    }
    case UndoOp::Swap:
        swapSlots(entry.position, entry.payload);
        break;
    case UndoOp::Contents:
        resetContents(entry.pointer<Block>());
        settleOrder();
        break;
    default:
        break;
    }
}

void ReferenceSequence::discard(UndoEntry& entry) noexcept {
    if (entry.op == UndoOp::Erase || entry.op == UndoOp::Store)
        entry.pointer<ModelElementImpl>()->removeRef();
    else if (entry.op == UndoOp::Contents)
        freeBlock(entry.pointer<Block>());
}

std::unique_ptr<AbstractOwnedCollection> ReferenceSequence::snapshot() const {
    auto copy = std::make_unique<Standalone<ReferenceSequence>>(nullptr, row());
    copy->block_ = copyOf(block_);
    return copy;
}

void ReferenceSequence::applyInverse(UndoEntry const& entry) {
    switch (entry.op) {
    case UndoOp::Insert:
        rawErase(entry.position)->removeRef();
        break;
    case UndoOp::Erase:
        makeRoom(entry.position);
        entry.pointer<ModelElementImpl>()->addRef();
        rawInsert(entry.position, entry.pointer<ModelElementImpl>());
        break;
    case UndoOp::Store:
        entry.pointer<ModelElementImpl>()->addRef();
        std::exchange(block_->items()[entry.position], entry.pointer<ModelElementImpl>())->removeRef();
        break;
    case UndoOp::Swap:
        swapSlots(entry.position, entry.payload);
        break;
    case UndoOp::Contents:
        resetContents(copyOf(entry.pointer<Block>()));
        break;
    default:
        break;
    }
}

void ReferenceSequence::dropContents() noexcept {
    resetContents(nullptr);
}

} // namespace brant::zero
