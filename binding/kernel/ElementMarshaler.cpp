#include "brant/zero/mi/ElementMarshaler.hpp"

#include "brant/zero/Model.hpp"
#include "brant/zero/Schema.hpp"
#include "quorl/BindingRegistry.hpp"

#include <unordered_map>

namespace brant::zero::mi {

using quorl::InternedName;
using quorl::factory::basic::BindingRegistry;

namespace {

/// Names are interned once for each class: objects are announced often.
InternedName scriptName(schema::ClassTable const& table) {
    static auto& names = *new std::unordered_map<schema::ClassTable const*, InternedName>;
    InternedName& name = names[&table];
    if (name.isEmpty()) name = quorl::internal::makeInterned(table.scriptName);
    return name;
}

InternedName modelName() {
    static InternedName const name = quorl::internal::makeInterned(modelClassName);
    return name;
}

} // namespace

quorl::ObjectRef announceElement(ModelElement const& element) {
    ModelElementImpl* const body = element.get();
    return BindingRegistry::announce(body, scriptName(body->classTable()));
}

quorl::ObjectRef announceModel(Model const& model) {
    return BindingRegistry::announce(model.get(), modelName());
}

quorl::ArrayPtr toArray(ModelElement const& element, schema::ClassTable const& declared) {
    if (element == nullptr) return omCreateQuorlEmpty(scriptName(declared));
    return omCreateQuorlScalar(announceElement(element));
}

quorl::ArrayPtr toArray(Model const& model) {
    if (!model) return omCreateQuorlEmpty(modelName());
    return omCreateQuorlScalar(announceModel(model));
}

quorl::ArrayPtr toArray(std::span<ModelElement const> elements, schema::ClassTable const& declared) {
    static InternedName const heterogeneous = quorl::internal::makeInterned("orvane.mixin.Heterogeneous");
    if (elements.empty()) return omCreateQuorlEmpty(scriptName(declared));
    quorl::ArrayPtr array = omCreateQuorlMatrix(heterogeneous, 1, elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i)
        omSetArrayElement(*array, i, announceElement(elements[i]));
    omSetClassOfHeterogeneousArray(*array);
    return array;
}

std::vector<ModelElement> elementsOf(krelArray const& array, schema::ClassTable const& wanted) {
    std::size_t const count = omGetNumberOfElements(array);
    if (count == 0) return {};
    auto const refuse = [&] {
        quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(std::string(wanted.scriptName));
    };
    if (omGetKind(array) != quorl::ArrayKind::Quorl) refuse();
    quorl::QuorlClass const& wantedClass = quorl::QuorlClass::requireClass(scriptName(wanted));
    std::vector<ModelElement> elements;
    elements.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        quorl::QuorlObject const* const object = omGetArrayElement(array, i);
        if (object == nullptr) quorl::raise<quorl::messages::InvalidHandle>();
        if (!object->getQuorlClass().isSubclassOf(wantedClass)) refuse();
        elements.push_back(
            *static_cast<ModelElement const*>(quorl::factory::impl::validateSelfPointer(*object)));
    }
    return elements;
}

ModelElement elementOf(krelArray const& array, schema::ClassTable const& wanted) {
    if (omGetNumberOfElements(array) > 1)
        quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(std::string(wanted.scriptName));
    std::vector<ModelElement> elements = elementsOf(array, wanted);
    return elements.empty() ? ModelElement() : std::move(elements[0]);
}

Model modelOf(krelArray const& array) {
    if (!omIsOfClass(array, modelName()))
        quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(std::string(modelClassName));
    if (omGetNumberOfElements(array) == 0) return {};
    quorl::QuorlObject const* const object = omGetArrayElement(array, 0);
    if (object == nullptr || !object->isValid()) return {};
    return *static_cast<Model const*>(object->getSelfPointer());
}

ModelElement& selfOf(krelArray const& array) {
    static InternedName const root = quorl::internal::makeInterned(modelElementTable.scriptName);
    return *static_cast<ModelElement*>(
        quorl::factory::impl::validateSelfPointer(array, quorl::QuorlClass::requireClass(root)));
}

bool ElementMarshaler::isCorrectType(krelArray const* array) const {
    return omIsOfClass(*array, scriptName(*table_));
}

quorl::ArrayPtr ElementMarshaler::toKrelArray(Value const& value) const {
    return toArray(value.getValue<ModelElement>(), *table_);
}

Value ElementMarshaler::fromKrelArray(krelArray const* array) const {
    return toValue(elementOf(*array, *table_));
}

quorl::ArrayPtr ElementMarshaler::fromValueVector(std::vector<Value> const& values) const {
    std::vector<ModelElement> elements;
    for (Value const& value : values)
        if (ModelElement element = value.getValue<ModelElement>(); element != nullptr)
            elements.push_back(std::move(element));
    return toArray(elements, *table_);
}

std::vector<Value> ElementMarshaler::toValueVector(krelArray const* array) const {
    std::vector<Value> values;
    for (ModelElement const& element : elementsOf(*array, *table_))
        values.push_back(toValue(element));
    return values;
}

Value ElementMarshaler::toUnmanagedSetValue(krelArray const* array) const {
    return toUnmanagedSequenceValue(
        array); // the model's collections tell by themselves whether they are sets
}

Value ElementMarshaler::toUnmanagedSequenceValue(krelArray const* array) const {
    return Value::ownContainer(getType(), elementsOf(*array, *table_));
}

Value ElementMarshaler::toValue(ModelElement const& element) const {
    meta::Type const type = element != nullptr ? meta::Type(element.getMetaClass()) : getType();
    return Value::own<ModelElement>(type, ValueFlags::One, element);
}

} // namespace brant::zero::mi
