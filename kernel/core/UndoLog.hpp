/// The recorded steps of one outermost transaction, with their payloads.
#pragma once

#include "Undo.hpp"

#include <vector>

namespace brant::zero {

/// Empties a list of what a transaction did. The room of a large one goes back: the next is likely to be
/// small.
template <class T>
void clearKeepingLittle(std::vector<T>& list) noexcept {
    constexpr std::size_t little = 1024;
    if (list.capacity() > little)
        std::vector<T>().swap(list);
    else
        list.clear();
}

/// Owns the payloads of its entries. Shared with the change records made from it, which read old collections
/// out of it on request.
class UndoLog {
  public:
    UndoLog() = default;
    UndoLog(UndoLog const&) = delete;
    UndoLog& operator=(UndoLog const&) = delete;
    ~UndoLog() { clear(); }

    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
    [[nodiscard]] bool empty() const noexcept { return entries_.empty(); }
    UndoEntry& operator[](std::size_t index) noexcept { return entries_[index]; }
    UndoEntry const& operator[](std::size_t index) const noexcept { return entries_[index]; }
    void push(UndoEntry const& entry) { entries_.push_back(entry); }
    /// Makes the next `push` unable to fail.
    void prepare() {
        if (entries_.size() == entries_.capacity())
            entries_.reserve(entries_.empty() ? 32 : entries_.size() * 2);
    }
    void pop() noexcept { entries_.pop_back(); }
    void clear() noexcept;
    /// Drops the payload of an entry.
    static void discard(UndoEntry& entry) noexcept;

  private:
    std::vector<UndoEntry> entries_;
};

} // namespace brant::zero
