#include "brant/zero/mi/DatatypeWrapper.hpp"

#include "brant/zero/meta/DatatypeSerializer.hpp"
#include "brant/zero/meta/PropertySerializer.hpp"
#include "brant/zero/mi/MetaMarshalerRegistry.hpp"

namespace brant::zero::mi {

using quorl::factory::impl::Invoker;

namespace {

meta::Type typeOf(schema::DatatypeTable const& table) {
    return meta::Type(static_cast<ModelElementImpl*>(table.object));
}

meta::Property propertyOf(schema::PropertyRow const& row) {
    return meta::Property(static_cast<ModelElementImpl*>(row.object));
}

meta::DatatypeSerializer const& accessOf(schema::DatatypeTable const& table) {
    return *meta::PropertySerializerRegistry::getInstance().getDatatypeSerializer(typeOf(table));
}

} // namespace

DatatypeProperty::DatatypeProperty(schema::DatatypeTable const& table, schema::PropertyRow const& row,
                                   DatatypeAccess access)
    : QuorlPropInfo(row.name, 0), table_(&table), row_(&row), access_(access),
      typeName_(spellingOf(propertyOf(row).getType(), false)) {}

quorl::ArrayPtr DatatypeProperty::getQuorlArray(quorl::QuorlObject& self) const {
    void const* const body = quorl::factory::impl::validateSelfPointer(self);
    meta::Property const property = propertyOf(*row_);
    Value const field = accessOf(*table_).getPropertyValue(access_.toValue(typeOf(*table_), body), property);
    return MetaMarshalerRegistry::getInstance().getPropertyMarshaler(property.getType()).toKrelArray(field);
}

void DatatypeProperty::setQuorlArray(quorl::QuorlObject& self, krelArray const& value) const {
    void* const body = quorl::factory::impl::validateSelfPointer(self);
    meta::Property const property = propertyOf(*row_);
    Value const field =
        MetaMarshalerRegistry::getInstance().getPropertyMarshaler(property.getType()).fromKrelArray(&value);
    Value const whole = access_.toValue(typeOf(*table_), body);
    access_.assign(body, accessOf(*table_).setPropertyValue(whole, property, field));
}

void initializeDatatype(quorl::QuorlClass& quorlClass, schema::DatatypeTable const& table,
                        DatatypeAccess access, PlainMethod::Body construct, PlainMethod::Body equal,
                        PlainMethod::Body unequal, PlainMethod::Body less) {
    quorl::factory::detail::initStringDataTypes();
    std::string const& name = quorlClass.getName().text();
    quorlClass.addMethod(std::make_unique<PlainMethod>(
        table.name, quorl::methodConstructor, Invoker::createSignature(name, "obj", "void"), construct));
    for (std::uint16_t i = 0; i < table.rowCount; ++i)
        quorlClass.addProperty(std::make_unique<DatatypeProperty>(table, table.rows[i], access));
    auto const add = [&](char const* method, PlainMethod::Body body) {
        quorlClass.addMethod(std::make_unique<PlainMethod>(
            method, quorl::methodPlain, Invoker::createSignature("logical scalar", "result", name, name),
            body));
    };
    add("eq", equal);
    add("ne", unequal);
    add("lt", less);
}

} // namespace brant::zero::mi
