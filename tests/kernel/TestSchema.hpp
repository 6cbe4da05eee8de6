/// \file
/// A schema of three classes, written by hand, that has each kind of collection once: the kernel is tested on
/// it without the generated model.
#pragma once

#include "brant/zero/Builder.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/ElementSequence.hpp"
#include "brant/zero/Enumeration.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/Model.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/Set.hpp"
#include "brant/zero/Standalone.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/View.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"

#include <string>
#include <vector>

namespace shop {

using namespace brant::zero;

class Shelf;

enum class Colour : std::int32_t { Infrared = -1, Red, Green, Blue };

/// What a shelf holds.
class Item : public ModelElement {
  public:
    class Impl;

    Item() noexcept = default;
    explicit Item(ModelElementImpl* body) noexcept : ModelElement(body) {}
    static Item create(Model const& model, std::u16string const& name = u"",
                       boost::uuids::uuid const& uuid = {});
    static meta::Class const& metaClass();

    [[nodiscard]] std::u16string const& getName() const;
    void setName(std::u16string name) const;
    [[nodiscard]] Shelf getShelf() const;
    void setShelf(Shelf const& shelf) const;
};

/// A special item.
class Gadget : public Item {
  public:
    class Impl;

    Gadget() noexcept = default;
    explicit Gadget(ModelElementImpl* body) noexcept : Item(body) {}
    static Gadget create(Model const& model, std::u16string const& name = u"");
    static meta::Class const& metaClass();
};

class Shelf : public ModelElement {
  public:
    class Impl;
    enum Row { Items, Parts, Links, Marks, Catalog, Gadgets, Notes, Numbers, Lid };

    Shelf() noexcept = default;
    explicit Shelf(ModelElementImpl* body) noexcept : ModelElement(body) {}
    static Shelf create(Model const& model);
    static meta::Class const& metaClass();

    [[nodiscard]] Impl* get() const noexcept;
    Impl* operator->() const noexcept { return get(); }

    /// \returns the property of a row.
    static meta::Property property(Row row);
};

class Item::Impl : public ModelElementImpl {
  public:
    static schema::PropertyRow const rows[2];
    static schema::ClassTable const table;

    Impl(ModelImpl* model, boost::uuids::uuid const& uuid) : ModelElementImpl(model, uuid) {}
    [[nodiscard]] schema::ClassTable const& classTable() const noexcept override { return table; }

    std::u16string name_;
};

class Gadget::Impl : public Item::Impl {
  public:
    static schema::ClassTable const table;

    Impl(ModelImpl* model, boost::uuids::uuid const& uuid) : Item::Impl(model, uuid) {}
    [[nodiscard]] schema::ClassTable const& classTable() const noexcept override { return table; }
};

class Shelf::Impl : public ModelElementImpl {
  public:
    static schema::PropertyRow const rows[9];
    static schema::ClassTable const table;

    Impl(ModelImpl* model, boost::uuids::uuid const& uuid) : ModelElementImpl(model, uuid) {}
    [[nodiscard]] schema::ClassTable const& classTable() const noexcept override { return table; }

    template <class Collection, std::size_t Index>
    using Field = InlineCollection<Collection, table, Index>;

    Field<ElementSequence<Item>, Items> items; ///< owned, unique, other end `Item.Shelf`
    Field<ElementSequence<Item>, Parts> parts; ///< owned, no other end, takes an element more than once
    Field<ElementSequence<Item>, Links> links; ///< not owned, takes an element more than once
    Field<ElementSequence<Item>, Marks> marks; ///< not owned, unique
    Field<ElementMap<std::u16string, Item>, Catalog> catalog; ///< owned, keyed by `Item.Name`
    Field<SubsettedElementSet<Gadget, ElementSequence<Item>>, Gadgets> gadgets; ///< of `items`
    Field<PrimitiveSequence<std::string>, Notes> notes;
    Field<PrimitiveSequence<int>, Numbers> numbers; ///< unique
    ModelElementImpl* lid_ = nullptr;               ///< owned
};

inline Shelf::Impl* Shelf::get() const noexcept {
    return static_cast<Impl*>(ModelElement::get());
}

/// The run-time description of the schema.
class ShopPackage final : public meta::AbstractMetaPackage {
  public:
    static ShopPackage& getInstance();

  private:
    ShopPackage();
};

/// An empty model.
Model createModel();
/// A placeholder for the item of that identity, in another model if so told.
Item createProxy(Model const& model, boost::uuids::uuid const& target, bool external = false);

/// \returns the names of a range of items, in order; "-" for a dead one.
template <class Range>
std::vector<std::u16string> namesOf(Range const& range) {
    std::vector<std::u16string> names;
    for (auto const& item : range)
        names.push_back(item ? Item(item.get()).getName() : u"-");
    return names;
}

using Names = std::vector<std::u16string>;

} // namespace shop

template <>
struct brant::zero::EnumerationTraits<shop::Colour> {
    static schema::EnumTable const table;
};
