#include "kernel/CollectionSupport.hpp"

#include "brant/zero/Text.hpp"

namespace shop {

ShopPackage& ShopPackage::getInstance() {
    static auto* instance = new ShopPackage;
    return *instance;
}

ShopPackage::ShopPackage() {
    meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
    Model::Thawer const thawer = registry.freezer().thaw();
    Transaction transaction = registry.metaModel().beginTransaction();
    createRoot(root);
    instantiate(packages[0]);
    weave(packages[0]);
    transaction.commit();
    registry.registerRootPackage(root_);
}

meta::Property propertyOf(Row row) {
    ShopPackage::getInstance();
    return Core::propertyOf(&rowOf(row));
}

Item CollectionTest::item(std::u16string const& name, boost::uuids::uuid const& uuid) {
    bool const isGadget = !name.empty() && name[0] >= u'A' && name[0] <= u'Z';
    Item const made = isGadget ? Item(Gadget::create(model, uuid)) : Item::create(model, uuid);
    made.setName(name);
    return made;
}

std::vector<Item> CollectionTest::letters(std::u16string const& names) {
    std::vector<Item> result;
    for (char16_t const name : names)
        result.push_back(item(std::u16string(1, name)));
    return result;
}

Item CollectionTest::proxy(boost::uuids::uuid const& target, bool external) {
    ProxyId id{u"", toUtf16(toString(target)).value(), nullptr};
    if (external) id.external = std::make_shared<std::u16string>(u"elsewhere");
    return Item(model.createProxy(Item::metaClass(), id).get());
}

void CollectionTest::expectSound() {
    if (auto const violation = model.verify()) ADD_FAILURE() << violation->rule << ": " << violation->detail;
}

} // namespace shop
