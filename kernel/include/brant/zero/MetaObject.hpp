/// \file
/// The link from a meta object to the table that it was made from.
#pragma once

#include "brant/zero/Element.hpp"

namespace brant::zero {

/// Base of the bodies of all meta objects.
class ZELKOR_API MetaObject : public ModelElementImpl {
  public:
    /// \returns the class table, property row or other table behind the object; null for an object that was
    /// not made from a table.
    template <class Table>
    [[nodiscard]] Table const* description() const noexcept {
        return static_cast<Table const*>(description_);
    }
    void describe(void const* table) noexcept { description_ = table; }

  protected:
    MetaObject(ModelImpl* model, boost::uuids::uuid const& uuid) : ModelElementImpl(model, uuid) {}
    ~MetaObject() override;

  private:
    void const* description_ = nullptr;
};

} // namespace brant::zero
