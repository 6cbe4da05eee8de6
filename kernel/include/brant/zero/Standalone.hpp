/// \file
/// How a collection learns its owner and property: as a field of an element, or standing alone.
#pragma once

#include "brant/zero/Core.hpp"

namespace brant::zero {

/// A collection that is a field of an element. It stores neither owner nor property: both follow from its
/// type, which keeps an empty collection at two words. `Table` is the class table, `Index` the property's
/// place in its own rows.
template <class Base, schema::ClassTable const& Table, std::size_t Index>
class InlineCollection final : public Base {
  public:
    InlineCollection() noexcept = default;
    [[nodiscard]] schema::PropertyRow const& row() const noexcept override { return Table.rows[Index]; }
    [[nodiscard]] ModelElementImpl* owner() const noexcept override { return Core::ownerOf(this, row()); }
};

/// A collection that stores its owner and property: a detached snapshot (null owner), or one made by the
/// factory of a registered type for a property that the caller handles itself. \requires the owner to outlive
/// it.
template <class Base>
class Standalone final : public Base {
  public:
    Standalone(ModelElementImpl* owner, schema::PropertyRow const& row) noexcept
        : owner_(owner), row_(&row) {}
    ~Standalone() override {
        if (owner_ != nullptr) Core::forget(*this);
    }
    [[nodiscard]] schema::PropertyRow const& row() const noexcept override { return *row_; }
    [[nodiscard]] ModelElementImpl* owner() const noexcept override { return owner_; }

  private:
    ModelElementImpl* owner_;
    schema::PropertyRow const* row_;
};

} // namespace brant::zero
