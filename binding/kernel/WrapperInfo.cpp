#include "brant/zero/mi/WrapperInfo.hpp"

#include "brant/zero/Collection.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/meta/Property.hpp"
#include "brant/zero/mi/MetaMarshalerRegistry.hpp"

#include <bit>

namespace brant::zero::mi {

using quorl::factory::impl::AdaptedClassGetter;
using quorl::factory::impl::PropertyGetter;
using quorl::factory::impl::PropertySetter;
using schema::PropertyKind;
using schema::PropertyRow;
using schema::ValueKind;

namespace {

ValueMarshaler const& marshalerOf(PropertyRow const& row) {
    return MetaMarshalerRegistry::getInstance().getPropertyMarshaler(Core::propertyOf(&row).getType());
}

/// Reads a field of a plain type where the row says it lies.
template <class V>
struct FieldReader {
    PropertyRow const* row;

    V operator()(ModelElement* self) const {
        ModelElementImpl const& body = *self->get();
        if constexpr (std::is_same_v<V, std::string> || std::is_same_v<V, std::u16string>)
            return Core::field<V>(body, *row);
        else if constexpr (std::is_same_v<V, double>)
            return std::bit_cast<double>(Core::readBits(body, *row));
        else
            return static_cast<V>(Core::readBits(body, *row));
    }
};

/// Reads whatever needs the metamodel to become an array: enumerations, elements, collections, computed
/// values.
class MarshalingGetter final : public PropertyGetter {
  public:
    explicit MarshalingGetter(PropertyRow const& row)
        : row_(&row), typeName_(spellingOf(Core::propertyOf(&row).getType(), row.many())) {}

    [[nodiscard]] std::string_view getTypeName() const override { return typeName_; }

    [[nodiscard]] quorl::ArrayPtr get(void* self) const override {
        ModelElementImpl& body = *static_cast<ModelElement*>(self)->get();
        switch (row_->kind) {
        case PropertyKind::Reference:
            return toArray(ModelElement(Core::readReference(body, *row_)), *row_->target);
        case PropertyKind::ContainerEnd:
            return toArray(ModelElement(Core::readContainerEnd(body, *row_)), *row_->target);
        case PropertyKind::Attribute:
            return marshalerOf(*row_).toKrelArray(valueOf(body));
        case PropertyKind::Derived:
            return row_->many() ? marshalerOf(*row_).fromValueVector(valueOf(body).extract())
                                : marshalerOf(*row_).toKrelArray(valueOf(body));
        case PropertyKind::ManyAttribute:
            return marshalerOf(*row_).fromCollection(
                static_cast<AbstractPrimitiveCollection const&>(Core::collection(body, *row_)));
        default:
            return toArray(static_cast<ReferenceCollection&>(*valueOf(body).collection()).getAllValues(),
                           *row_->target);
        }
    }

  private:
    Value valueOf(ModelElementImpl const& body) const {
        return body.getPropertyValue(Core::propertyOf(row_), ReflectionPrivateTag::PUBLIC_ACCESS);
    }

    PropertyRow const* row_;
    std::string typeName_;
};

/// Writes as the typed setter does; a collection has its content replaced.
class MarshalingSetter final : public PropertySetter {
  public:
    explicit MarshalingSetter(PropertyRow const& row) : row_(&row) {}

    void set(void* self, krelArray const& value, std::string_view) const override {
        ValueMarshaler const& marshaler = marshalerOf(*row_);
        static_cast<ModelElement*>(self)->setPropertyValue(Core::propertyOf(row_), valueOf(marshaler, value));
    }

  private:
    Value valueOf(ValueMarshaler const& marshaler, krelArray const& value) const {
        if (!row_->many()) return marshaler.fromKrelArray(&value);
        return row_->ordered() ? marshaler.toUnmanagedSequenceValue(&value)
                               : marshaler.toUnmanagedSetValue(&value);
    }

    PropertyRow const* row_;
};

template <class V>
std::unique_ptr<PropertyGetter> fieldGetter(PropertyRow const& row) {
    return std::make_unique<AdaptedClassGetter<V, ModelElement, FieldReader<V>, V>>(FieldReader<V>{&row});
}

std::unique_ptr<PropertyGetter> makeGetter(PropertyRow const& row) {
    if (row.kind != PropertyKind::Attribute) return std::make_unique<MarshalingGetter>(row);
    switch (row.valueKind) {
    case ValueKind::Boolean:
        return fieldGetter<bool>(row);
    case ValueKind::Integer:
        return fieldGetter<std::int32_t>(row);
    case ValueKind::UnlimitedNatural:
        return fieldGetter<std::uint32_t>(row);
    case ValueKind::Integer64:
        return fieldGetter<std::int64_t>(row);
    case ValueKind::UInteger64:
        return fieldGetter<std::uint64_t>(row);
    case ValueKind::Real:
        return fieldGetter<double>(row);
    case ValueKind::String:
        return fieldGetter<std::u16string>(row);
    case ValueKind::StdString:
        return fieldGetter<std::string>(row);
    default:
        return std::make_unique<MarshalingGetter>(row);
    }
}

std::unique_ptr<PropertySetter> makeSetter(PropertyRow const& row) {
    bool const settable =
        !row.readOnly() && row.kind != PropertyKind::View && row.kind != PropertyKind::Derived;
    return settable ? std::make_unique<MarshalingSetter>(row) : nullptr;
}

schema::OperationRow const& operationNamed(schema::ClassTable const& table, std::string_view name) {
    for (schema::ClassTable const* at = &table; at != nullptr; at = at->base)
        for (std::uint16_t i = 0; i < at->operationCount; ++i)
            if (name == at->operations[i].name) return at->operations[i];
    quorl::raise<quorl::messages::NoSuchMember>(table.scriptName, name);
}

} // namespace

ElementProperty::ElementProperty(PropertyRow const& row)
    : PropertyImpl(row.name, 0, makeGetter(row), makeSetter(row)), row_(&row) {}

meta::Property ElementProperty::getProperty() const {
    return Core::propertyOf(row_);
}

ElementWrapperInfo::ElementWrapperInfo(schema::ClassTable const& table, std::span<ScriptMethod const> methods)
    : HandleClassInfo(table.scriptName), table_(&table), methods_(methods) {}

ModelElement ElementWrapperInfo::makeHandle(void* implementation) const {
    return ModelElement(static_cast<ModelElementImpl*>(implementation));
}

void ElementWrapperInfo::initializeClass(quorl::QuorlClass* quorlClass) {
    quorl::factory::detail::initStringDataTypes();
    std::span<PropertyRow const> const rows(table_->rows, table_->rowCount);
    quorlClass->addSuperclass(quorl::internal::makeInterned(table_->base->scriptName));
    if (!table_->isAbstract) quorlClass->addMethod(std::make_unique<Construct>(*table_));
    for (PropertyRow const& row : rows)
        quorlClass->addProperty(std::make_unique<ElementProperty>(row));
    quorlClass->addMethod(std::make_unique<StaticMetaClass>(*table_));
    for (PropertyRow const& row : rows)
        if (row.owning()) quorlClass->addMethod(std::make_unique<CreateInto>(*table_, row));
    for (ScriptMethod const& method : methods_) {
        schema::OperationRow const& row = operationNamed(*table_, method.name);
        if (method.call != nullptr)
            quorlClass->addMethod(std::make_unique<StaticQueryMethod>(row, method.call));
        else
            quorlClass->addMethod(std::make_unique<QueryMethod>(*table_, row));
    }
}

} // namespace brant::zero::mi
