#include "brant/zero/Reflection.hpp"

#include "ModelImpl.hpp"
#include "brant/zero/Builder.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/MetaObject.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/Query.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Standalone.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"

namespace brant::zero {

using schema::PropertyKind;
using schema::PropertyRow;
using schema::ValueKind;

namespace {

[[noreturn]] void noSuchProperty(meta::Property const& property, ModelElementImpl const& element) {
    std::u16string const name = property ? property.getName() : std::u16string();
    reportException(brant0::messages::NoSuchProperty(name, meta::qualifiedName(element.getMetaClass())));
}

[[noreturn]] void readOnly(PropertyRow const& row) {
    std::string const name = std::string(row.owner->qualifiedName) + "." + row.name;
    reportException(brant0::messages::CannotSetReadOnlyProperty(toUtf16(name).value()));
}

} // namespace

PropertyRow const& Core::rowOf(meta::Property const& property) {
    PropertyRow const* row = property ? property.get()->description<PropertyRow>() : nullptr;
    if (row == nullptr)
        reportException(
            brant0::messages::NoSuchProperty(property ? property.getName() : std::u16string(), u""));
    return *row;
}

PropertyRow const& Core::rowFor(Body const& element, meta::Property const& property) {
    PropertyRow const* row = property ? property.get()->description<PropertyRow>() : nullptr;
    if (row == nullptr || row->owner == nullptr || !element.classTable().conformsTo(*row->owner))
        noSuchProperty(property, element);
    return *row;
}

meta::Property Core::propertyOf(PropertyRow const* row) {
    if (row == nullptr) return {};
    if (row->object == nullptr && row->owner != nullptr) row->owner->metaClass(); // assembles the package
    return meta::Property(static_cast<ModelElementImpl*>(row->object));
}

meta::Property query::PropertyTerm::getProperty() const {
    return Core::propertyOf(row_);
}

Value derivedValue(PropertyRow const& row, bool value) {
    return Value::createPrimitiveValue(Core::propertyOf(&row), value);
}

Value elementValue(meta::Property const& property, ModelElement const& element) {
    meta::Type const type = element ? meta::Type(element.getMetaClass()) : property.getType();
    return Value::own<ModelElement>(type, ValueFlags::One, element);
}

Value scalarValue(meta::Property const& property, PropertyRow const& row, std::uint64_t bits) {
    meta::Type const type = property.getType();
    switch (row.valueKind) {
    case ValueKind::Boolean:
        return Value::own<bool>(type, ValueFlags::One, bits != 0);
    case ValueKind::Integer:
        return Value::own<int>(type, ValueFlags::One, static_cast<int>(bits));
    case ValueKind::UnlimitedNatural:
        return Value::own<unsigned int>(type, ValueFlags::One, static_cast<unsigned int>(bits));
    case ValueKind::Integer64:
        return Value::own<long>(type, ValueFlags::One, static_cast<long>(bits));
    case ValueKind::UInteger64:
        return Value::own<unsigned long>(type, ValueFlags::One, bits);
    case ValueKind::Real:
        return Value::own<double>(type, ValueFlags::One, std::bit_cast<double>(bits));
    default:
        // An enumeration's payload is the sign-extended word.
        return Value(type, static_cast<unsigned long>(static_cast<long>(static_cast<int>(bits))),
                     ValueFlags::One);
    }
}

Value oldAttribute(meta::Property const& property, PropertyRow const& row, std::uint64_t bits) {
    return scalarValue(property, row, bits);
}
Value oldAttribute(meta::Property const& property, PropertyRow const&, std::string const& text) {
    return Value::own<std::string>(property.getType(), ValueFlags::One, text);
}
Value oldAttribute(meta::Property const& property, PropertyRow const&, std::u16string const& text) {
    return Value::own<std::u16string>(property.getType(), ValueFlags::One, text);
}

std::unique_ptr<AbstractOwnedCollection> emptyCollection(meta::Property const& property) {
    PropertyRow const& row = Core::rowOf(property);
    switch (row.kind) {
    case PropertyKind::ManyReference:
        return std::make_unique<Standalone<ReferenceSequence>>(nullptr, row);
    case PropertyKind::Map:
        return std::make_unique<Standalone<ReferenceMap>>(nullptr, row);
    case PropertyKind::ManyAttribute:
        if (row.valueKind == ValueKind::StdString)
            return std::make_unique<Standalone<PrimitiveSequence<std::string>>>(nullptr, row);
        if (row.valueKind == ValueKind::String)
            return std::make_unique<Standalone<PrimitiveSequence<std::u16string>>>(nullptr, row);
        return std::make_unique<Standalone<PrimitiveSequence<int>>>(nullptr, row);
    default:
        return nullptr;
    }
}

bool ModelElementImpl::hasPropertyValue(meta::Property const& property, ReflectionPrivateTag const&) const {
    PropertyRow const& row = Core::rowFor(*this, property);
    switch (row.kind) {
    case PropertyKind::Attribute:
        return true;
    case PropertyKind::Reference:
        return Core::hasReference(*this, row);
    case PropertyKind::ContainerEnd:
        return Core::readContainerEnd(*this, row) != nullptr;
    case PropertyKind::View:
        return !Core::collection(*this, *row.related).empty() && !Core::collection(*this, row).empty();
    case PropertyKind::Derived:
        if (row.derived == nullptr) return false;
        return !row.manyDerived || !row.derived(*this, row).extract().empty();
    default:
        return !Core::collection(*this, row).empty();
    }
}

Value ModelElementImpl::getPropertyValue(meta::Property const& property,
                                         ReflectionPrivateTag const& tag) const {
    PropertyRow const& row = Core::rowFor(*this, property);
    switch (row.kind) {
    case PropertyKind::Attribute:
        if (row.valueKind == ValueKind::StdString)
            return oldAttribute(property, row, Core::field<std::string>(*this, row));
        if (row.valueKind == ValueKind::String)
            return oldAttribute(property, row, Core::field<std::u16string>(*this, row));
        return scalarValue(property, row, Core::readBits(*this, row));
    case PropertyKind::Reference: {
        ModelElementImpl* target =
            tag.resolves() ? Core::readReference(*this, row) : Core::field<ModelElementImpl*>(*this, row);
        return elementValue(property, ModelElement(target));
    }
    case PropertyKind::ContainerEnd:
        return elementValue(property, ModelElement(Core::readContainerEnd(*this, row)));
    case PropertyKind::Derived:
        if (row.derived == nullptr) noSuchProperty(property, *this);
        return row.derived(*this, row);
    case PropertyKind::ManyAttribute:
        return Value::refer(property, Core::collection(*this, row));
    default: {
        Core::requireWritable(*this);
        auto& members =
            static_cast<ReferenceCollection&>(Core::collection(const_cast<ModelElementImpl&>(*this), row));
        if (tag.resolves()) members.resolveAll();
        return Value::refer(property, members);
    }
    }
}

namespace {

void setAttributeValue(ModelElementImpl& self, PropertyRow const& row, Value const& value) {
    switch (row.valueKind) {
    case ValueKind::Boolean:
        Core::setBoolean(self, row, value.getValue<bool>());
        break;
    case ValueKind::Integer:
        Core::setWord(self, row, static_cast<std::uint32_t>(value.getValue<int>()));
        break;
    case ValueKind::UnlimitedNatural:
        Core::setWord(self, row, value.getValue<unsigned int>());
        break;
    case ValueKind::Integer64:
        Core::setLong(self, row, static_cast<std::uint64_t>(value.getValue<long>()));
        break;
    case ValueKind::UInteger64:
        Core::setLong(self, row, value.getValue<unsigned long>());
        break;
    case ValueKind::Real:
        Core::setReal(self, row, value.getValue<double>());
        break;
    case ValueKind::StdString:
        Core::setStdString(self, row, value.getValue<std::string>());
        break;
    case ValueKind::String:
        if (row.customText != nullptr)
            row.customText(self, value.getValue<std::u16string>());
        else
            Core::setString(self, row, value.getValue<std::u16string>());
        break;
    default:
        Core::setWord(self, row, static_cast<std::uint32_t>(value.getEnumerationWord(*row.enumeration)));
    }
}

/// Replaces the content of a stored collection by that of another one, in one level.
void setCollectionValue(ModelElementImpl& self, PropertyRow const& row, Value const& value) {
    AbstractOwnedCollection& target = Core::collection(self, row);
    std::vector<Value> members;
    if (AbstractOwnedCollection* source = value.collection()) {
        if (ReferenceCollection* elements = source->asReferences()) {
            for (ModelElement const& element : elements->getAllValuesAndProxies())
                if (element)
                    members.push_back(
                        Value::own<ModelElement>(element.getMetaClass(), ValueFlags::One, element));
        } else {
            members = static_cast<AbstractPrimitiveCollection&>(*source).getAllValues();
        }
    } else if (value.flags() == ValueFlags::Sequence || value.flags() == ValueFlags::Set) {
        members = value.extract();
    } else {
        value.refuse();
    }
    Core::requireWritable(self);
    Core::Level level(self);
    if (ReferenceCollection* elements = target.asReferences()) {
        elements->genericClear();
        for (Value const& member : members)
            elements->genericAdd(member.getValue<ModelElement>());
    } else {
        auto& values = static_cast<AbstractPrimitiveCollection&>(target);
        values.clear();
        for (Value const& member : members)
            values.genericAdd(member);
    }
    level.commit();
}

} // namespace

ModelElementImpl* Core::targetOf(Row const& row, Value const& value) {
    ModelElement const target = value.getValue<ModelElement>();
    if (target != nullptr && !target.get()->classTable().conformsTo(*row.target)) value.refuse();
    return target.get();
}

void ModelElementImpl::setPropertyValue(meta::Property const& property, Value const& value,
                                        ReflectionPrivateTag const& tag) {
    PropertyRow const& row = Core::rowFor(*this, property);
    if (row.readOnly() || row.kind == PropertyKind::View || row.kind == PropertyKind::Derived) readOnly(row);
    switch (row.kind) {
    case PropertyKind::Attribute:
        setAttributeValue(*this, row, value);
        break;
    case PropertyKind::Reference: {
        ModelElement const target(Core::targetOf(row, value));
        ModelElementImpl* stored = Core::field<ModelElementImpl*>(*this, row);
        // A stored placeholder gives way without upkeep: there is no other end to tell.
        bool const givesWay = !tag.resolves() && target && !target.get()->isProxy() && stored != nullptr &&
                              stored->valid() && stored->isProxy();
        if (!givesWay) {
            Core::setReference(*this, row, target.get());
            break;
        }
        Core::requireWritable(*this);
        Core::Level level(*this);
        Core::recordReference(*this, row);
        Core::basicSetReference(*this, row, nullptr);
        Core::setReference(*this, row, target.get());
        level.commit();
        break;
    }
    case PropertyKind::ContainerEnd:
        Core::setReference(*this, row, ModelElement(Core::targetOf(row, value)).get());
        break;
    default:
        setCollectionValue(*this, row, value);
    }
}

Value ModelElementImpl::invoke(meta::Operation const& operation, std::vector<Value> const& arguments,
                               ReflectionPrivateTag const&) {
    schema::OperationRow const* row =
        operation ? operation.get()->description<schema::OperationRow>() : nullptr;
    meta::Class const owner = operation ? meta::Class::cast(operation.getOwningType()) : meta::Class();
    if (row == nullptr || row->invoker == nullptr || arguments.size() != row->argumentCount ||
        !meta::isSubclassOf(getMetaClass(), owner))
        reportException(brant0::messages::InvalidValue());
    return row->invoker()->invoke(*this, arguments);
}

void Builder::setOrAdd(meta::Property const& property, Value const& value) {
    PropertyRow const* row = property ? property.get()->description<PropertyRow>() : nullptr;
    bool const takes = row != nullptr && row->stored() && !row->contained() &&
                       row->kind != PropertyKind::ContainerEnd && classTable().conformsTo(*row->owner);
    if (!takes)
        reportException(brant0::messages::NoSuchProperty(property ? property.getName() : std::u16string(),
                                                         meta::qualifiedName(getMetaClass())));
    Core::setOrAdd(*this, *row, value);
    given_ |= std::uint64_t{1} << row->index;
}

void Builder::setOrAdd(meta::Property const& property, std::unique_ptr<Builder>& builder) {
    PropertyRow const* row = property ? property.get()->description<PropertyRow>() : nullptr;
    bool const takes =
        row != nullptr && row->owning() && builder != nullptr && classTable().conformsTo(*row->owner);
    if (!takes)
        reportException(brant0::messages::NoSuchProperty(property ? property.getName() : std::u16string(),
                                                         meta::qualifiedName(getMetaClass())));
    if (!builder->classTable().conformsTo(*row->target))
        reportException(brant0::messages::CannotAddIncompatibleTypes(
            meta::qualifiedName(builder->getMetaClass()), meta::qualifiedName(property.getType())));
    countNesting(builder.get());
    Core::setOrAdd(*this, *row, std::move(builder));
    given_ |= std::uint64_t{1} << row->index;
}

} // namespace brant::zero
