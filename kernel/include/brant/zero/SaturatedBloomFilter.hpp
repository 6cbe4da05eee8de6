#pragma once

#include <array>
#include <boost/uuid/uuid.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "brant/zero/Export.hpp"

namespace brant::zero {

/// An approximate set of identities, asked before a collection searches its elements: "no" is certain,
/// "yes" may be wrong. An identity may be added several times and must be removed as often. A filter that
/// holds nothing owns no memory, one that holds something a table of 256 bytes.
/// Useful up to about 200 identities (then one wrong "yes" in three); each operation is O(1).
class ZELKOR_API SaturatedBloomFilter {
  public:
    SaturatedBloomFilter() = default;
    SaturatedBloomFilter(SaturatedBloomFilter&& other) noexcept
        : _counters(std::move(other._counters)), _size(std::exchange(other._size, 0)) {}
    SaturatedBloomFilter& operator=(SaturatedBloomFilter&& other) noexcept {
        _counters = std::move(other._counters);
        _size = std::exchange(other._size, 0);
        return *this;
    }

    void add(boost::uuids::uuid const& id);

    /// Precondition: `id` was added more often than removed. A `remove` of an identity that the filter
    /// knows to be absent does nothing.
    void remove(boost::uuids::uuid const& id) noexcept;

    [[nodiscard]] bool contains(boost::uuids::uuid const& id) const noexcept;

    [[nodiscard]] bool empty() const noexcept { return !_counters; }

  private:
    // Counters of four bits, two in a byte. One that has reached 15 has lost count and stays.
    using Counters = std::array<std::uint8_t, 256>;

    std::unique_ptr<Counters> _counters;
    std::size_t _size = 0;
};

} // namespace brant::zero
