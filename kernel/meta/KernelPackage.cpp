#include "brant/zero/meta/KernelPackage.hpp"

#include "brant/zero/MetaObject.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/Names.hpp"

#include <atomic>

namespace brant::zero {

namespace {
constinit schema::ClassTable const* const rootChain[] = {&modelElementTable};
constinit schema::PropertyRow const* const noRows[] = {nullptr};
} // namespace

constinit schema::ClassTable const modelElementTable = {
    .name = "ModelElement",
    .shortName = "ModelElement",
    .qualifiedName = "brant.zero.ModelElement",
    .nativeName = "brant::zero::ModelElement",
    .scriptName = "brant.zero.ModelElement",
    .identity = "3e2d4f1a-5b0c-3c7e-8d91-6a2f4e5b7c01",
    .base = nullptr,
    .chain = rootChain,
    .depth = 0,
    .count = 1,
    .isAbstract = true,
    .bodySize = sizeof(ModelElementImpl),
    .rows = nullptr,
    .rowCount = 0,
    .stored = noRows,
    .operations = nullptr,
    .operationCount = 0,
    .construct = nullptr,
    .makeBuilder = nullptr,
    .metaClass = &ModelElement::metaClass,
    .makeCollection = nullptr,
    .object = nullptr,
};

MetaObject::~MetaObject() = default;

namespace meta {

bool& KernelPackage::assembling() noexcept {
    thread_local bool running = false;
    return running;
}

namespace {
std::atomic<KernelPackage*> assembled{nullptr};
KernelPackage* underWay = nullptr; // guarded by the registry's mutex
} // namespace

KernelPackage& KernelPackage::getInstance() {
    if (KernelPackage* package = assembled.load(std::memory_order_acquire)) return *package;
    // The assembly looks names up in the registry that it fills, so a second call from inside it must get
    // through.
    std::lock_guard const lock(MetaRegistry::raw().mutex());
    if (assembled.load(std::memory_order_relaxed) == nullptr && underWay == nullptr)
        assembled.store(new KernelPackage, std::memory_order_release);
    return underWay != nullptr ? *underWay : *assembled.load(std::memory_order_relaxed);
}

KernelPackage::KernelPackage() {
    struct UnderWay {
        explicit UnderWay(KernelPackage* package) { underWay = package; }
        ~UnderWay() { underWay = nullptr; }
    };
    UnderWay const guard(this);
    assembling() = true;
    describesModels_ = false;
    MetaRegistry& registry = MetaRegistry::raw();
    std::lock_guard const lock(registry.mutex());
    Model::Thawer const thawer = registry.freezer().thaw();
    Transaction transaction = registry.metaModel().beginTransaction();
    createRoot(root);
    createPrimitives();
    for (std::uint16_t i = 0; i < root.packageCount; ++i)
        instantiate(packages[i]);
    createRootClasses();
    for (std::uint16_t i = 0; i < root.packageCount; ++i)
        weave(packages[i]);
    transaction.commit();
    registry.registerRootPackage(root_);
    assembling() = false;
}

void KernelPackage::createRootClasses() {
    Package const package(static_cast<ModelElementImpl*>(packages[1].object));
    modelElement_ =
        createClass(u"ModelElement", modelElementTable.scriptName, true, modelElementTable.identity);
    modelElement_.get()->describe(&modelElementTable);
    modelElementTable.object = modelElement_.get();
    model_ = createClass(u"Model", "brant.zero.Model", false, "3e2d4f1a-5b0c-3c7e-8d91-6a2f4e5b7c02");
    for (Class const& cls : {modelElement_, model_}) {
        cls.setOwningPackage(package);
        MetaRegistry::raw().addName(qualifiedName(cls), cls);
    }
    // Operations name the model by its simple name.
    MetaRegistry::raw().addName(u"Model", model_);
}

void KernelPackage::createPrimitives() {
    for (char16_t const* name : {u"Boolean", u"String", u"StdString", u"UnlimitedNatural", u"Integer",
                                 u"Integer64", u"UInteger64", u"Real"}) {
        boost::uuids::uuid const identity = nameUuid3(root_.uuid(), toUtf8(name));
        PrimitiveType type = PrimitiveType::create(MetaRegistry::raw().metaModel(), identity);
        type.setName(name);
        MetaRegistry::raw().addName(name, type);
    }
}

} // namespace meta
} // namespace brant::zero
