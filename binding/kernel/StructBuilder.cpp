#include "brant/zero/mi/StructBuilder.hpp"

#include "brant/zero/Core.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"
#include "brant/zero/meta/Property.hpp"
#include "brant/zero/mi/ElementMarshaler.hpp"
#include "brant/zero/mi/MetaMarshalerRegistry.hpp"

#include <algorithm>

namespace brant::zero::mi {

namespace {

using schema::ClassTable;
using schema::PropertyKind;
using schema::PropertyRow;

[[noreturn]] void invalidValue() {
    quorl::raise<brant0::messages::InvalidValue>();
}

PropertyRow const& rowNamed(ClassTable const& table, std::string const& name) {
    for (ClassTable const* at = &table; at != nullptr; at = at->base)
        for (std::uint16_t i = 0; i < at->rowCount; ++i)
            if (name == at->rows[i].name) return at->rows[i];
    quorl::raise<brant0::messages::NoSuchProperty>(name, table.qualifiedName);
}

/// The class that the field `MetaClass` asks for.
meta::Class namedClass(krelArray const& value, meta::Class const& declared) {
    meta::Class named;
    if (omIsChar(value) || omIsString(value)) {
        std::u16string const name = quorl::factory::extractString(value);
        auto const& registry = meta::MetaRegistry::getInstance();
        named = meta::Class::cast(registry.getTypeByScriptName(toUtf8(name)));
        if (!named) named = meta::Class::cast(registry.getType(name));
        if (!named) quorl::raise<brant0::messages::NoSuchType>(name);
    } else {
        named = meta::Class::cast(elementOf(value, meta::Class::Impl::table));
        if (!named) invalidValue();
    }
    if (!meta::isSubclassOf(named, declared))
        quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(declared.getScriptName());
    return named;
}

class Reader {
  public:
    Reader(krelArray const& init, std::size_t index) : init_(init), index_(index) {}

    std::unique_ptr<Builder> read(Model const& model, meta::Class const& declared, unsigned depth) const {
        if (!omIsStruct(init_) || depth > Builder::nestingLimit) invalidValue();
        auto const& fields = omGetFields(init_);
        bool const names = std::find(fields.begin(), fields.end(), metaClassField) != fields.end();
        krelArray const* const name = names ? omGetField(init_, index_, metaClassField) : nullptr;
        meta::Class const metaClass = name != nullptr ? namedClass(*name, declared) : declared;
        std::unique_ptr<Builder> builder = detail::createEmptyBuilder(model, metaClass);
        for (std::string const& field : fields) {
            if (field == metaClassField) continue;
            if (krelArray const* const value = omGetField(init_, index_, field))
                set(*builder, rowNamed(builder->classTable(), field), *value, depth);
        }
        return builder;
    }

  private:
    static void set(Builder& builder, PropertyRow const& row, krelArray const& value, unsigned depth) {
        if (row.readOnly() || row.kind == PropertyKind::View || row.kind == PropertyKind::Derived)
            quorl::raise<brant0::messages::CannotSetReadOnlyProperty>(std::string(row.owner->qualifiedName) +
                                                                      "." + row.name);
        meta::Property const property = Core::propertyOf(&row);
        if (row.owning()) return addOwned(builder, row, property, value, depth);
        ValueMarshaler const& marshaler =
            MetaMarshalerRegistry::getInstance().getPropertyMarshaler(property.getType());
        if (!row.many()) return builder.setOrAdd(property, marshaler.fromKrelArray(&value));
        for (Value const& member : marshaler.toValueVector(&value))
            builder.setOrAdd(property, member);
    }

    static void addOwned(Builder& builder, PropertyRow const& row, meta::Property const& property,
                         krelArray const& value, unsigned depth) {
        std::size_t const count = omGetNumberOfElements(value);
        if (count != 0 && !omIsStruct(value)) invalidValue();
        if (count > 1 && !row.many()) invalidValue();
        for (std::size_t i = 0; i < count; ++i) {
            std::unique_ptr<Builder> sub =
                Reader(value, i).read(builder.getModel(), row.target->metaClass(), depth + 1);
            builder.setOrAdd(property, sub);
        }
    }

    krelArray const& init_;
    std::size_t index_;
};

} // namespace

namespace detail {

std::unique_ptr<Builder> createBuilderFromStruct(krelArray const& init, std::size_t index, Model const& model,
                                                 meta::Class const& metaClass) {
    return Reader(init, index).read(model, metaClass, 0);
}

std::unique_ptr<Builder> createBuilderFromStructFirst(krelArray const& init, std::size_t index,
                                                      Model const& model, meta::Class const& metaClass) {
    if (!omIsStruct(init) || omGetNumberOfElements(init) != 1) invalidValue();
    return createBuilderFromStruct(init, index, model, metaClass);
}

std::unique_ptr<Builder> createEmptyBuilder(Model const& model, meta::Class const& metaClass) {
    std::unique_ptr<Builder> builder = meta::instantiateBuilder(metaClass, model);
    if (builder == nullptr)
        quorl::raise<quorl::messages::CannotInstantiate>(
            metaClass.getScriptName(),
            "the class is abstract; name another one in the field MetaClass of the init");
    return builder;
}

boost::uuids::uuid extractUuid(krelArray const& value) {
    boost::uuids::uuid identity;
    if (!parseUuid(quorl::factory::extractChars(value), identity)) invalidValue();
    return identity;
}

} // namespace detail

} // namespace brant::zero::mi
