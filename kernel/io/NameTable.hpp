// A table from names to pointers that is built once and asked for each name of a text.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace brant::zero::io {

template <class T>
class NameTable {
  public:
    struct Entry {
        std::string_view name;
        T const* value = nullptr;
    };

    /// \requires the names to outlive the table.
    explicit NameTable(std::vector<Entry> const& entries) : slots_(std::bit_ceil(entries.size() * 2 + 2)) {
        for (Entry const& entry : entries)
            if (find(entry.name) == nullptr) slotFor(entry.name) = entry;
    }

    [[nodiscard]] T const* find(std::string_view name) const noexcept {
        for (std::size_t i = hash(name);; ++i) {
            Entry const& entry = slots_[i & (slots_.size() - 1)];
            if (entry.value == nullptr || entry.name == name) return entry.value;
        }
    }

  private:
    Entry& slotFor(std::string_view name) noexcept {
        std::size_t i = hash(name);
        while (slots_[i & (slots_.size() - 1)].value != nullptr)
            ++i;
        return slots_[i & (slots_.size() - 1)];
    }

    /// Names are short and differ at their ends: two words and the length tell nearly all of them apart.
    static std::size_t hash(std::string_view name) noexcept {
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        if (name.size() >= 8) {
            std::memcpy(&first, name.data(), 8);
            std::memcpy(&last, name.data() + name.size() - 8, 8);
        } else {
            for (char const character : name)
                first = first << 8 | static_cast<unsigned char>(character);
        }
        std::uint64_t const mixed = (first ^ std::rotl(last, 29) ^ name.size()) * 0x9e3779b97f4a7c15ull;
        return static_cast<std::size_t>(mixed >> 40);
    }

    std::vector<Entry> slots_; ///< a power of two, at most half full
};

} // namespace brant::zero::io
