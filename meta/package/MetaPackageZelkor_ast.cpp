#include "zelkor/ast/MetaPackageZelkor_ast.hpp"

namespace zelkor::ast {

namespace meta = brant::zero::meta;

MetaPackageZelkor_ast& MetaPackageZelkor_ast::getInstance() {
    static auto* package = new MetaPackageZelkor_ast;
    return *package;
}

MetaPackageZelkor_ast::MetaPackageZelkor_ast() {
    initialize();
}

void MetaPackageZelkor_ast::initialize() {
    meta::MetaRegistry& registry = meta::MetaRegistry::getInstance();
    std::lock_guard const lock(registry.mutex());
    brant::zero::Model const model = registry.metaModel();
    brant::zero::Model::Thawer const thawer = registry.freezer().thaw();

    // The library may have been loaded before in this process: the old description makes room.
    boost::uuids::uuid identity;
    if (brant::zero::parseUuid(root.identity, identity))
        if (meta::Package const old = meta::Package::cast(model.findElement(identity))) {
            brant::zero::Transaction removal = model.beginTransaction();
            registry.unregisterRootPackage(old.getUri());
            old.destroy();
            removal.commit();
        }

    brant::zero::Transaction transaction = model.beginTransaction();
    createRoot(root);
    for (std::uint16_t i = 0; i < root.packageCount; ++i)
        instantiate(packages[i]);
    for (std::uint16_t i = 0; i < root.packageCount; ++i)
        weave(packages[i]);
    transaction.commit();
    registry.registerRootPackage(root_);
}

} // namespace zelkor::ast
