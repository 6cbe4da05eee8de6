// The end of reading: identities are checked and references bound, all in one go.
#pragma once

#include "ModelReader.hpp"

#include <cstdint>
#include <vector>

namespace brant::zero::io {

class ReferenceResolver {
  public:
    explicit ReferenceResolver(ModelReader& reader) noexcept : reader_(reader) {}
    /// \throws ParseError for an identity given twice, and for a reference without target or with one of a
    /// wrong class.
    void resolve();

  private:
    using OpenReference = ModelReader::OpenReference;

    /// One element: where it stands in the model's list, and a part of the hash that spares most looks at it.
    struct Slot {
        std::uint32_t tag;
        std::uint32_t number; ///< counted from 1; 0 in a free slot
    };

    void index();
    [[nodiscard]] ModelElementImpl* find(uuid const& identity) const noexcept;
    [[nodiscard]] ModelElementImpl& targetOf(OpenReference const& reference) const;
    void bind(OpenReference const& reference);
    void bindSlots();

    ModelReader& reader_;
    std::vector<Slot> slots_; ///< a power of two, at most two thirds full
    std::vector<std::pair<OpenReference, ModelElementImpl*>> owned_;
};

} // namespace brant::zero::io
