#include "brant/zero/Text.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/Names.hpp"
#include "brant/zero/meta/StandardTypes.hpp"

namespace brant::zero::meta {

using schema::PropertyKind;
using schema::ValueKind;

namespace {

std::u16string wide(char const* text) {
    return toUtf16(text).value();
}

boost::uuids::uuid identity(std::string const& text) {
    boost::uuids::uuid uuid{};
    if (!text.empty() && !parseUuid(text, uuid))
        throw std::invalid_argument("malformed identity in the schema: " + text);
    return uuid;
}

template <class Handle>
Handle objectOf(ElementImpl* object) {
    return Handle(static_cast<ModelElementImpl*>(object));
}

/// Ties a new meta object and its table together.
template <class Handle, class Table>
Handle describe(Handle object, Table const& table) {
    object.get()->describe(&table);
    table.object = object.get();
    return object;
}

char const* primitiveName(ValueKind kind) {
    switch (kind) {
    case ValueKind::Boolean:
        return "Boolean";
    case ValueKind::Integer:
        return "Integer";
    case ValueKind::UnlimitedNatural:
        return "UnlimitedNatural";
    case ValueKind::Integer64:
        return "Integer64";
    case ValueKind::UInteger64:
        return "UInteger64";
    case ValueKind::Real:
        return "Real";
    case ValueKind::StdString:
        return "StdString";
    default:
        return "String";
    }
}

int multiplicityFlag(schema::PropertyRow const& row) {
    return row.kind == PropertyKind::Map ? 6 : (row.many() ? 2 : 1);
}

} // namespace

Model const& AbstractMetaPackage::model() const {
    return MetaRegistry::raw().metaModel();
}

Class AbstractMetaPackage::classOf(schema::ClassTable const& table) const {
    return objectOf<Class>(table.object);
}

Package AbstractMetaPackage::createPackage(std::u16string const& name, std::u16string const& uri,
                                           boost::uuids::uuid const& uuid) {
    Package package = Package::create(model(), uuid);
    package.setName(name);
    package.setUri(uri);
    objects_.push_back(package);
    return package;
}

Class AbstractMetaPackage::createClass(std::u16string const& name, std::string const& scriptName,
                                       bool isAbstract, std::string const& uuid) {
    Class cls = Class::create(model(), identity(uuid));
    cls.setName(name);
    cls.setScriptName(scriptName);
    cls.setIsAbstract(isAbstract);
    objects_.push_back(cls);
    return cls;
}

DataType AbstractMetaPackage::createDataType(std::u16string const& name, std::string const& scriptName,
                                             std::string const& uuid) {
    DataType type = DataType::create(model(), identity(uuid));
    type.setName(name);
    type.setScriptName(scriptName);
    objects_.push_back(type);
    return type;
}

Enum AbstractMetaPackage::createEnum(std::u16string const& name, std::string const& uuid) {
    Enum type = Enum::create(model(), identity(uuid));
    type.setName(name);
    objects_.push_back(type);
    return type;
}

EnumLiteral AbstractMetaPackage::createEnumLiteral(std::u16string const& name, std::int64_t value,
                                                   std::string const& uuid) {
    EnumLiteral literal = EnumLiteral::create(model(), identity(uuid));
    literal.setName(name);
    literal.setValue(value);
    objects_.push_back(literal);
    return literal;
}

Property AbstractMetaPackage::createProperty(std::u16string const& name, int flags, bool composite,
                                             std::string const& uuid) {
    Property property = Property::create(model(), identity(uuid));
    property.setName(name);
    property.setMultiplicity(flags);
    property.setIsComposite(composite);
    objects_.push_back(property);
    return property;
}

Operation AbstractMetaPackage::createOperation(std::u16string const& name, std::string const& uuid) {
    Operation operation = Operation::create(model(), identity(uuid));
    operation.setName(name);
    objects_.push_back(operation);
    return operation;
}

Argument AbstractMetaPackage::createArgument(std::u16string const& name, std::string const& uuid) {
    Argument argument = Argument::create(model(), identity(uuid));
    argument.setName(name);
    objects_.push_back(argument);
    return argument;
}

void AbstractMetaPackage::setPropertyIndex(Property const& property, std::int64_t index) {
    property.setPropertyIndex(index);
}

PrimitiveType AbstractMetaPackage::requirePrimitive(std::u16string const& name) {
    PrimitiveType type = MetaRegistry::getInstance().getPrimitiveType(name);
    if (!type) reportException(brant0::messages::NoSuchType(name));
    return type;
}

void AbstractMetaPackage::createRoot(schema::RootTable const& table) {
    root_ = Package::create(model(), identity(table.identity));
    root_.setUri(wide(table.uri));
    PrimitiveSequence<std::u16string>& imports = root_.getImportedPackageURIsMutable();
    AbstractOwnedCollection::Operation operation(imports);
    imports.push_back(wide(table.importedUri));
    operation.commit();
}

// First pass. Types are known by name from here on, so that the second pass may refer to any of them.

void AbstractMetaPackage::announceType(Type const& type, char const* dottedName) {
    MetaRegistry::raw().addName(wide(dottedName), type);
}

Property AbstractMetaPackage::instantiateProperty(schema::PropertyRow const& row) {
    Property property = createProperty(wide(row.name), multiplicityFlag(row), row.contained(), row.identity);
    if (row.derivedFlag()) property.setIsDerived(true);
    if (row.readOnly()) property.setIsReadOnly(true);
    if (row.ordered()) property.setIsOrdered(true);
    if (row.unique()) property.setIsUnique(true);
    if (row.transient()) property.setIsTransient(true);
    if ((row.flags & (schema::HasDefault | schema::DefaultIsNone)) != 0) {
        property.setHasDefaultValue(true);
        if (row.defaultText != nullptr) property.setDefaultValue(wide(row.defaultText));
    }
    if (row.stored()) setPropertyIndex(property, row.index);
    return describe(property, row);
}

void AbstractMetaPackage::instantiateOperations(schema::ClassTable const& table) {
    for (std::uint16_t i = 0; i < table.operationCount; ++i) {
        schema::OperationRow const& row = table.operations[i];
        Operation operation = describe(createOperation(wide(row.name), row.identity), row);
        operation.setIsAbstract(row.isAbstract);
        operation.setIsStatic(row.isStatic);
        operation.setIsPublic(true);
        operation.setIsEvent(false);
        for (std::uint16_t j = 0; j < row.argumentCount; ++j) {
            schema::ArgumentRow const& argument = row.arguments[j];
            describe(createArgument(wide(argument.name), argument.identity), argument)
                .setIsInput(argument.isInput);
        }
    }
}

void AbstractMetaPackage::instantiate(schema::PackageTable const& table) {
    std::lock_guard const lock(MetaRegistry::raw().mutex());
    Model::Thawer const thawer = MetaRegistry::raw().freezer().thaw();
    describe(createPackage(wide(table.name), wide(table.uri), identity(table.identity)), table);
    for (std::uint16_t i = 0; i < table.memberCount; ++i) {
        if (schema::ClassTable const* cls = table.members[i].classTable) {
            Class const made = createClass(wide(cls->name), cls->scriptName, cls->isAbstract, cls->identity);
            announceType(describe(made, *cls), cls->qualifiedName);
            for (std::uint16_t j = 0; j < cls->rowCount; ++j)
                instantiateProperty(cls->rows[j]);
            instantiateOperations(*cls);
        } else {
            schema::DatatypeTable const& type = *table.members[i].datatype;
            announceType(describe(createDataType(wide(type.name), type.scriptName, type.identity), type),
                         type.qualifiedName);
            for (std::uint16_t j = 0; j < type.rowCount; ++j)
                instantiateProperty(type.rows[j]);
        }
    }
    for (std::uint16_t i = 0; i < table.enumCount; ++i) {
        schema::EnumTable const& type = *table.enums[i];
        announceType(describe(createEnum(wide(type.name), type.identity), type), type.qualifiedName);
        for (std::uint16_t j = 0; j < type.literalCount; ++j) {
            schema::LiteralRow const& literal = type.literals[j];
            describe(createEnumLiteral(wide(literal.name), literal.value, literal.identity), literal);
        }
    }
}

// Second pass.

void AbstractMetaPackage::weaveProperties(Type const& owner, schema::PropertyRow const* rows,
                                          std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        schema::PropertyRow const& row = rows[i];
        Property property = objectOf<Property>(row.object);
        property.setOwningType(owner);
        if (row.target != nullptr)
            property.setType(objectOf<Type>(row.target->object));
        else if (row.enumeration != nullptr)
            property.setType(objectOf<Type>(row.enumeration->object));
        else
            property.setType(requireType(primitiveName(row.valueKind)));
        if (row.opposite != nullptr) property.setOpposite(objectOf<Property>(row.opposite->object));
        if (row.kind == PropertyKind::Map) property.setQualifiedBy(objectOf<Property>(row.related->object));
        property.setIsQualificationUnique(true);
    }
}

void AbstractMetaPackage::weaveOperations(Type const& owner, schema::ClassTable const& table) {
    for (std::uint16_t i = 0; i < table.operationCount; ++i) {
        schema::OperationRow const& row = table.operations[i];
        Operation operation = objectOf<Operation>(row.object);
        operation.setOwningType(owner);
        for (std::uint16_t j = 0; j < row.argumentCount; ++j) {
            Argument argument = objectOf<Argument>(row.arguments[j].object);
            argument.setType(requireType(row.arguments[j].type));
            argument.setOperation(operation);
            argument.setLower(1);
            argument.setUpper(1);
        }
        operation.setType(requireType(row.type));
        operation.setLower(row.lower);
        operation.setUpper(row.upper);
    }
}

void AbstractMetaPackage::weaveClass(schema::ClassTable const& table, Package const& package) {
    Class cls = classOf(table);
    cls.setOwningPackage(package);
    cls.setSuperclass(Class(static_cast<ModelElementImpl*>(table.base->object)));
    weaveProperties(cls, table.rows, table.rowCount);
    weaveOperations(cls, table);
    MetaRegistry& registry = MetaRegistry::raw();
    BuilderFactory builders;
    if (table.makeBuilder != nullptr)
        builders = [&table](Model const& model) {
            std::unique_ptr<Builder> builder = table.makeBuilder();
            builder->setModel(model);
            return builder;
        };
    registry.registerType(
        cls,
        [&table](ModelElementImpl* owner, Property const& property) {
            return table.makeCollection(owner, Core::rowOf(property));
        },
        std::move(builders));
    registry.registerTypeNames(cls, table.nativeName, table.scriptName, "");
    if (describesModels_)
        registry.registerClass(table);
}

void AbstractMetaPackage::weaveEnum(schema::EnumTable const& table, Package const& package) {
    Enum type = objectOf<Enum>(table.object);
    type.setOwningPackage(package);
    type.setUnderlyingType(StandardTypes::integer());
    for (std::uint16_t i = 0; i < table.literalCount; ++i)
        objectOf<EnumLiteral>(table.literals[i].object).setParentEnum(type);
    table.registerType(type);
}

void AbstractMetaPackage::weave(schema::PackageTable const& table) {
    std::lock_guard const lock(MetaRegistry::raw().mutex());
    Model::Thawer const thawer = MetaRegistry::raw().freezer().thaw();
    Package package = objectOf<Package>(table.object);
    package.setParentPackage(table.parent == nullptr ? root_ : objectOf<Package>(table.parent->object));
    for (std::uint16_t i = 0; i < table.memberCount; ++i) {
        if (schema::ClassTable const* cls = table.members[i].classTable) {
            weaveClass(*cls, package);
            continue;
        }
        schema::DatatypeTable const& datatype = *table.members[i].datatype;
        DataType type = objectOf<DataType>(datatype.object);
        type.setOwningPackage(package);
        weaveProperties(type, datatype.rows, datatype.rowCount);
        datatype.registerType(type);
    }
    for (std::uint16_t i = 0; i < table.enumCount; ++i)
        weaveEnum(*table.enums[i], package);
}

} // namespace brant::zero::meta
