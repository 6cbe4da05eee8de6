#include "brant/zero/meta/EnumerationSupport.hpp"

namespace brant::zero::meta::internal {

namespace {

template <class Table>
void registerNames(Type const& type, Table const& table, CollectionMaker collections) {
    MetaRegistry& registry = MetaRegistry::getInstance();
    registry.registerType(type, collections, nullptr);
    registry.registerTypeNames(type, table.nativeName, table.scriptName, "");
}

} // namespace

void registerEnumeration(Enum const& type, schema::EnumTable const& table, CollectionMaker collections,
                         SerializerMaker serializer) {
    registerNames(type, table, collections);
    for (char const* key : {"", "ID", "PublicID"})
        PropertySerializerRegistry::getInstance().registerPropertySerializer(type, serializer(type), key);
}

void registerDatatype(DataType const& type, schema::DatatypeTable const& table, CollectionMaker collections,
                      std::unique_ptr<DatatypeSerializer> serializer) {
    registerNames(type, table, collections);
    PropertySerializerRegistry::getInstance().registerDatatypeSerializer(type, std::move(serializer));
}

} // namespace brant::zero::meta::internal
