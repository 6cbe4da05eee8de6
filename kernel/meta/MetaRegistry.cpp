#include "brant/zero/meta/MetaRegistry.hpp"

#include "brant/zero/Text.hpp"
#include "brant/zero/meta/Invoker.hpp"
#include "brant/zero/meta/KernelPackage.hpp"
#include "brant/zero/meta/Names.hpp"

#include <string_view>

namespace brant::zero::meta {

namespace {

Model makeMetaModel() {
    return Model::create({}, ModelConstellation(), DefaultWorkQueueFactory());
}

CollectionFactory const noCollections;
BuilderFactory const noBuilders;

} // namespace

AbstractInvoker::~AbstractInvoker() = default;

Type resultType(schema::OperationRow const& row) {
    return Operation(static_cast<ModelElementImpl*>(row.object)).getType();
}

MetaRegistry::MetaRegistry() : model_(makeMetaModel()), freezer_(model_) {}

MetaRegistry& MetaRegistry::raw() {
    static auto* registry = new MetaRegistry;
    return *registry;
}

MetaRegistry& MetaRegistry::getInstance() {
    if (!KernelPackage::assembling()) KernelPackage::getInstance();
    return raw();
}

Type MetaRegistry::getType(std::u16string const& dottedName) const {
    auto const found = byName_.find(dottedName);
    return found == byName_.end() ? Type() : found->second;
}

PrimitiveType MetaRegistry::getPrimitiveType(std::u16string const& name) const {
    return PrimitiveType::cast(getType(name));
}

Type MetaRegistry::getTypeByScriptName(std::string const& scriptName) const {
    auto const found = byScriptName_.find(scriptName);
    return found == byScriptName_.end() ? Type() : found->second;
}

void MetaRegistry::addName(std::u16string const& name, Type const& type) {
    byName_.insert_or_assign(name, type);
}

void MetaRegistry::registerType(Type const& type, CollectionFactory collections, BuilderFactory builders) {
    Entry& entry = entries_[type];
    entry.collections = std::move(collections);
    entry.builders = std::move(builders);
}

void MetaRegistry::registerTypeNames(Type const& type, std::string native, std::string script,
                                     std::string third) {
    byScriptName_.insert_or_assign(script, type);
    Entry& entry = entries_[type];
    entry.names = {std::move(native), std::move(script), std::move(third)};
    entry.named = true;
}

MetaRegistry::Entry const* MetaRegistry::entry(Type const& type) const {
    auto const found = entries_.find(type);
    return found == entries_.end() ? nullptr : &found->second;
}

MetaRegistry::Names const* MetaRegistry::names(Type const& type) const {
    Entry const* found = entry(type);
    return found == nullptr || !found->named ? nullptr : &found->names;
}

CollectionFactory const& MetaRegistry::collectionFactory(Type const& type) const {
    Entry const* found = entry(type);
    return found == nullptr ? noCollections : found->collections;
}

BuilderFactory const& MetaRegistry::builderFactory(Type const& type) const {
    Entry const* found = entry(type);
    return found == nullptr ? noBuilders : found->builders;
}

void MetaRegistry::registerClass(schema::ClassTable const& table) {
    std::erase_if(classes_, [&](schema::ClassTable const* other) {
        return std::string_view(other->shortName) == table.shortName;
    });
    classes_.push_back(&table);
}

void MetaRegistry::registerRootPackage(Package const& package) {
    roots_.push_back(package);
}

void MetaRegistry::unregisterRootPackage(std::u16string const& uri) {
    std::erase_if(roots_, [&](Package const& package) { return package && package.getUri() == uri; });
}

std::u16string qualifiedName(Type const& type) {
    std::u16string name = type.getName();
    for (Package package = type.getOwningPackage(); package; package = package.getParentPackage())
        if (!package.getName().empty()) name = package.getName() + u"." + name;
    return name;
}

std::string qualifiedNameUtf8(Type const& type) {
    return toUtf8(qualifiedName(type));
}

std::u16string qualifiedName(Property const& property) {
    Type const owner = property.getOwningType();
    return owner ? qualifiedName(owner) + u"." + property.getName() : property.getName();
}

bool isSubclassOf(Class const& cls, Class const& other) {
    for (Class at = cls; at; at = at.getSuperclass())
        if (at == other) return true;
    return false;
}

schema::ClassTable const* tableOf(Class const& cls) noexcept {
    return cls ? cls.get()->description<schema::ClassTable>() : nullptr;
}

std::unique_ptr<Builder> instantiateBuilder(Class const& cls, Model const& model) {
    BuilderFactory const& factory = MetaRegistry::getInstance().builderFactory(cls);
    return factory ? factory(model) : nullptr;
}

Type requireType(char const* dottedName) {
    std::u16string name = toUtf16(dottedName).value();
    MetaRegistry& registry = MetaRegistry::getInstance();
    // Operations name the root classes without their package.
    Type type = registry.getType(name);
    if (!type) reportException(brant0::messages::NoSuchType(name));
    return type;
}

} // namespace brant::zero::meta
