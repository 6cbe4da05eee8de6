#include "TestSchema.hpp"

#include "Primitive.ipp"
#include "brant/zero/Element.hpp"
#include "brant/zero/Text.hpp"

#include <span>

// Offsets of fields in single-inheritance bodies: supported by both compilers, warned about by default.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace s = brant::zero::schema;

template class brant::zero::PrimitiveSequence<shop::Colour>;
template class brant::zero::PrimitiveSet<shop::Colour>;

namespace shop {

namespace {

s::PropertyRow makeRow(char const* name, char const* identity, s::PropertyKind kind, s::ValueKind valueKind,
                       int flags, std::uint16_t index, std::size_t offset, s::ClassTable const& owner,
                       s::ClassTable const* target = nullptr, s::PropertyRow const* opposite = nullptr,
                       s::PropertyRow const* related = nullptr) {
    s::PropertyRow row{};
    row.name = name;
    row.identity = identity;
    row.kind = kind;
    row.valueKind = valueKind;
    row.flags = static_cast<std::uint16_t>(flags);
    row.index = index;
    row.offset = static_cast<std::uint32_t>(offset);
    row.owner = &owner;
    row.target = target;
    row.opposite = opposite;
    row.related = related;
    return row;
}

s::PropertyRow many(char const* name, char const* identity, int flags, std::uint16_t index,
                    std::size_t offset, s::PropertyRow const* opposite = nullptr) {
    return makeRow(name, identity, s::PropertyKind::ManyReference, s::ValueKind::Element, s::Ordered | flags,
                   index, offset, Shelf::Impl::table, &Item::Impl::table, opposite);
}

s::PropertyRow list(char const* name, char const* identity, s::ValueKind kind, int flags, std::uint16_t index,
                    std::size_t offset) {
    return makeRow(name, identity, s::PropertyKind::ManyAttribute, kind, s::Ordered | flags, index, offset,
                   Shelf::Impl::table);
}

template <class Impl>
ModelElementImpl* construct(ModelImpl* model, boost::uuids::uuid const& uuid) {
    return new Impl(model, uuid);
}

s::ClassTable const* const itemChain[] = {&modelElementTable, &Item::Impl::table};
s::ClassTable const* const gadgetChain[] = {&modelElementTable, &Item::Impl::table, &Gadget::Impl::table};
s::ClassTable const* const shelfChain[] = {&modelElementTable, &Shelf::Impl::table};
s::PropertyRow const* const itemStored[] = {nullptr, &Item::Impl::rows[0], &Item::Impl::rows[1]};
s::PropertyRow const* const shelfStored[] = {
    nullptr,
    &Shelf::Impl::rows[Shelf::Items],
    &Shelf::Impl::rows[Shelf::Parts],
    &Shelf::Impl::rows[Shelf::Links],
    &Shelf::Impl::rows[Shelf::Marks],
    &Shelf::Impl::rows[Shelf::Catalog],
    &Shelf::Impl::rows[Shelf::Notes],
    &Shelf::Impl::rows[Shelf::Numbers],
    &Shelf::Impl::rows[Shelf::Lid],
};

template <class Impl>
s::ClassTable makeTable(char const* name, char const* qualifiedName, char const* identity,
                        s::ClassTable const& base, std::span<s::ClassTable const* const> chain,
                        std::span<s::PropertyRow const* const> stored, meta::Class const& (*metaClass)()) {
    s::ClassTable table{};
    table.name = table.shortName = name;
    table.qualifiedName = table.nativeName = table.scriptName = qualifiedName;
    table.identity = identity;
    table.base = &base;
    table.chain = chain.data();
    table.depth = static_cast<std::uint16_t>(chain.size() - 1);
    table.count = static_cast<std::uint16_t>(stored.size());
    table.stored = stored.data();
    table.construct = &construct<Impl>;
    table.metaClass = metaClass;
    return table;
}

s::ClassTable withRows(s::ClassTable table, std::span<s::PropertyRow const> rows,
                       std::unique_ptr<AbstractOwnedCollection> (*collections)(ModelElementImpl*,
                                                                               s::PropertyRow const&)) {
    table.rows = rows.data();
    table.rowCount = static_cast<std::uint16_t>(rows.size());
    table.makeCollection = collections;
    return table;
}

} // namespace

s::PropertyRow const Item::Impl::rows[2] = {
    makeRow("Name", "5f0a3c52-7a0f-4c0b-8f5e-000000000001", s::PropertyKind::Attribute, s::ValueKind::String,
            s::Ordered, 1, offsetof(Impl, name_), table),
    makeRow("Shelf", "5f0a3c52-7a0f-4c0b-8f5e-000000000002", s::PropertyKind::ContainerEnd,
            s::ValueKind::Element, s::Ordered, 2, 0, table, &Shelf::Impl::table,
            &Shelf::Impl::rows[Shelf::Items]),
};

s::PropertyRow const Shelf::Impl::rows[9] = {
    many("Items", "5f0a3c52-7a0f-4c0b-8f5e-000000000011", s::Contained | s::Unique, 1, offsetof(Impl, items),
         &Item::Impl::rows[1]),
    many("Parts", "5f0a3c52-7a0f-4c0b-8f5e-000000000012", s::Contained, 2, offsetof(Impl, parts)),
    many("Links", "5f0a3c52-7a0f-4c0b-8f5e-000000000013", 0, 3, offsetof(Impl, links)),
    many("Marks", "5f0a3c52-7a0f-4c0b-8f5e-000000000014", s::Unique, 4, offsetof(Impl, marks)),
    makeRow("Catalog", "5f0a3c52-7a0f-4c0b-8f5e-000000000015", s::PropertyKind::Map, s::ValueKind::Element,
            s::Contained, 5, offsetof(Impl, catalog), table, &Item::Impl::table, nullptr,
            &Item::Impl::rows[0]),
    makeRow("Gadgets", "5f0a3c52-7a0f-4c0b-8f5e-000000000016", s::PropertyKind::View, s::ValueKind::Element,
            s::Contained | s::IsDerived, s::noIndex, offsetof(Impl, gadgets), table, &Gadget::Impl::table,
            nullptr, &Shelf::Impl::rows[Shelf::Items]),
    list("Notes", "5f0a3c52-7a0f-4c0b-8f5e-000000000017", s::ValueKind::StdString, 0, 6,
         offsetof(Impl, notes)),
    list("Numbers", "5f0a3c52-7a0f-4c0b-8f5e-000000000018", s::ValueKind::Integer, s::Unique, 7,
         offsetof(Impl, numbers)),
    makeRow("Lid", "5f0a3c52-7a0f-4c0b-8f5e-000000000019", s::PropertyKind::Reference, s::ValueKind::Element,
            s::Contained | s::Ordered, 8, offsetof(Impl, lid_), table, &Item::Impl::table),
};

s::ClassTable const Item::Impl::table =
    withRows(makeTable<Impl>("Item", "shop.Item", "5f0a3c52-7a0f-4c0b-8f5e-000000000021", modelElementTable,
                             itemChain, itemStored, &Item::metaClass),
             rows, &makeElementCollection<Item>);
s::ClassTable const Gadget::Impl::table =
    withRows(makeTable<Impl>("Gadget", "shop.Gadget", "5f0a3c52-7a0f-4c0b-8f5e-000000000022",
                             Item::Impl::table, gadgetChain, itemStored, &Gadget::metaClass),
             {}, &makeElementCollection<Gadget>);
s::ClassTable const Shelf::Impl::table =
    withRows(makeTable<Impl>("Shelf", "shop.Shelf", "5f0a3c52-7a0f-4c0b-8f5e-000000000023", modelElementTable,
                             shelfChain, shelfStored, &Shelf::metaClass),
             rows, &makeElementCollection<Shelf>);

namespace {

s::LiteralRow const colours[] = {
    {"Infrared", "5f0a3c52-7a0f-4c0b-8f5e-000000000031", -1, nullptr},
    {"Red", "5f0a3c52-7a0f-4c0b-8f5e-000000000032", 0, nullptr},
    {"Green", "5f0a3c52-7a0f-4c0b-8f5e-000000000033", 1, nullptr},
    {"Blue", "5f0a3c52-7a0f-4c0b-8f5e-000000000034", 2, nullptr},
};
s::PackageTable::Member const members[] = {
    {&Item::Impl::table, nullptr}, {&Gadget::Impl::table, nullptr}, {&Shelf::Impl::table, nullptr}};
s::EnumTable const* const enums[] = {&EnumerationTraits<Colour>::table};
s::PackageTable const package = {
    .name = "shop",
    .qualifiedName = "shop",
    .uri = "http://schema.zelkor.example/shop",
    .identity = "5f0a3c52-7a0f-4c0b-8f5e-000000000041",
    .parent = nullptr,
    .members = members,
    .memberCount = 3,
    .enums = enums,
    .enumCount = 1,
    .object = nullptr,
};
s::RootTable const root = {
    .identity = "5f0a3c52-7a0f-4c0b-8f5e-000000000042",
    .uri = "http://schema.zelkor.example/shop/root",
    .importedUri = "http://schema.zelkor.example/brant0/meta/19700101",
    .packages = &package,
    .packageCount = 1,
};

} // namespace

ShopPackage& ShopPackage::getInstance() {
    static auto* instance = new ShopPackage;
    return *instance;
}

ShopPackage::ShopPackage() {
    meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
    Model::Thawer const thawer = registry.freezer().thaw();
    Transaction transaction = registry.metaModel().beginTransaction();
    createRoot(root);
    instantiate(package);
    weave(package);
    transaction.commit();
    registry.registerRootPackage(root_);
}

meta::Class const& Item::metaClass() {
    static meta::Class const handle = ShopPackage::getInstance().classOf(Impl::table);
    return handle;
}
meta::Class const& Gadget::metaClass() {
    static meta::Class const handle = ShopPackage::getInstance().classOf(Impl::table);
    return handle;
}
meta::Class const& Shelf::metaClass() {
    static meta::Class const handle = ShopPackage::getInstance().classOf(Impl::table);
    return handle;
}

meta::Property Shelf::property(Row row) {
    ShopPackage::getInstance();
    return Core::propertyOf(&Impl::rows[row]);
}

Item Item::create(Model const& model, std::u16string const& name, boost::uuids::uuid const& uuid) {
    Item const item(Core::create(Impl::table, model, uuid).get());
    item.setName(name);
    return item;
}
Gadget Gadget::create(Model const& model, std::u16string const& name) {
    Gadget const gadget(Core::create(Impl::table, model, {}).get());
    gadget.setName(name);
    return gadget;
}
Shelf Shelf::create(Model const& model) {
    return Shelf(Core::create(Impl::table, model, {}).get());
}

std::u16string const& Item::getName() const {
    return static_cast<Impl&>(checked()).name_;
}
void Item::setName(std::u16string name) const {
    Core::setString(checked(), Impl::rows[0], std::move(name));
}
Shelf Item::getShelf() const {
    return Shelf(Core::readContainerEnd(checked(), Impl::rows[1]));
}
void Item::setShelf(Shelf const& shelf) const {
    Core::setReference(checked(), Impl::rows[1], shelf.get());
}

Model createModel() {
    return Model::create({}, {}, DefaultWorkQueueFactory());
}

Item createProxy(Model const& model, boost::uuids::uuid const& target, bool external) {
    ProxyId id{u"", toUtf16(toString(target)).value(), nullptr};
    if (external) id.external = std::make_shared<std::u16string>(u"elsewhere");
    return Item(model.createProxy(Item::metaClass(), id).get());
}

} // namespace shop

brant::zero::schema::EnumTable const brant::zero::EnumerationTraits<shop::Colour>::table = {
    .name = "Colour",
    .qualifiedName = "shop.Colour",
    .nativeName = "shop::Colour",
    .scriptName = "shop.Colour",
    .identity = "5f0a3c52-7a0f-4c0b-8f5e-000000000035",
    .literals = shop::colours,
    .literalCount = 4,
    .registerType = [](brant::zero::meta::Enum const&) {},
    .object = nullptr,
};
