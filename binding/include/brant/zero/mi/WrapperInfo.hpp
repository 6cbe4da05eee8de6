/// \file
/// The script class of an element class.
#pragma once

#include "brant/zero/mi/Methods.hpp"
#include "quorl/Factory.hpp"

#include <span>

namespace brant::zero::mi {

/// A property of an element class. Besides what every property offers, it tells its row, through which native
/// code reads and writes without an array: `Core::field`, `Core::readReference`, `Core::setWord` and the
/// like, or `ModelElement::getPropertyValue` with `getProperty()`.
class ZELKOR_API ElementProperty final : public quorl::factory::impl::PropertyImpl {
  public:
    explicit ElementProperty(schema::PropertyRow const& row);

    [[nodiscard]] schema::PropertyRow const& getRow() const noexcept { return *row_; }
    [[nodiscard]] meta::Property getProperty() const;

  private:
    schema::PropertyRow const* row_;
};

/// A script class made from the table of an element class.
///
/// All handles are one pointer and `ModelElement` is their base, so the body of every object is taken for
/// one: the code below exists once and not once for each class.
class ZELKOR_API ElementWrapperInfo : public quorl::factory::HandleClassInfo<ModelElement, false> {
  public:
    /// Both outlive the object.
    ElementWrapperInfo(schema::ClassTable const& table, std::span<ScriptMethod const> methods);

    [[nodiscard]] bool isAbstract() const override { return table_->isAbstract; }
    /// Registers superclass, constructor, own properties in the order of the schema, `StaticMetaClass`, a
    /// `createIntoP` for each owning property, and the methods.
    void initializeClass(quorl::QuorlClass* quorlClass) override;
    [[nodiscard]] schema::ClassTable const& getTable() const noexcept { return *table_; }

  protected:
    [[nodiscard]] ModelElement makeHandle(void* implementation) const override;

  private:
    schema::ClassTable const* table_;
    std::span<ScriptMethod const> methods_;
};

/// The script class of `X`.
template <class X>
class Brant0WrapperInfo : public ElementWrapperInfo {
  public:
    using ElementWrapperInfo::ElementWrapperInfo;
};

} // namespace brant::zero::mi
