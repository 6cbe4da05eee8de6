/// The undo log: one entry per recorded step, taken back strictly last first.
#pragma once

#include "brant/zero/Collection.hpp"
#include "brant/zero/ModelElement.hpp"

#include <cstdint>
#include <vector>

namespace brant::zero {

enum class UndoOp : std::uint8_t {
    // on an element
    Bits,      ///< payload: the old scalar
    StdText,   ///< payload: owned std::string
    Text,      ///< payload: owned std::u16string
    Reference, ///< payload: counted old target
    Link,      ///< payload: old container; row: old feature; position: old order
    Destroyed, ///< the element was alive; its memory is kept by the entry
    // on a collection
    Touch,    ///< announced, nothing to take back
    Insert,   ///< at position
    Erase,    ///< payload: what stood at position (owned by the collection's kind)
    Store,    ///< payload: what stood at position before
    Swap,     ///< position and payload: the two positions
    Contents, ///< payload: the whole old content (owned by the collection's kind)
};

struct UndoEntry {
    union {
        ModelElementImpl* element;
        AbstractOwnedCollection* collection;
    };
    schema::PropertyRow const* row;
    std::uint64_t payload;
    std::uint32_t position;
    UndoOp op;

    [[nodiscard]] bool onCollection() const noexcept { return op >= UndoOp::Touch; }
    template <class T>
    [[nodiscard]] T* pointer() const noexcept {
        return reinterpret_cast<T*>(payload);
    }
};

inline UndoEntry collectionEntry(AbstractOwnedCollection& collection, UndoOp op, std::size_t position = 0,
                                 std::uint64_t payload = 0) noexcept {
    UndoEntry entry{};
    entry.collection = &collection;
    entry.row = &collection.row();
    entry.op = op;
    entry.position = static_cast<std::uint32_t>(position);
    entry.payload = payload;
    return entry;
}

template <class T>
std::uint64_t asPayload(T* pointer) noexcept {
    return reinterpret_cast<std::uint64_t>(pointer);
}

} // namespace brant::zero
