#include "ArrayData.hpp"
#include "quorl/QuorlClass.hpp"

using namespace quorl;
using namespace quorl::detail;

namespace {

Objects& objectsOf(krelArray& array, std::string_view where) {
    return partOf<Objects>(array, where, "object");
}

bool isHeterogeneous(InternedName name) {
    return name.text() == heterogeneousName;
}

/// \returns the first class at or above `candidate`, nearest first, from which `other` derives, or null.
QuorlClass* sharedClass(QuorlClass& candidate, QuorlClass const& other) {
    if (other.isSubclassOf(candidate)) return &candidate;
    for (QuorlClass* const superclass : candidate.getSuperclasses())
        if (QuorlClass* const shared = sharedClass(*superclass, other)) return shared;
    return nullptr;
}

} // namespace

ArrayPtr omCreateQuorlEmpty(InternedName className) {
    return omCreateQuorlMatrix(className, 0, 0);
}

ArrayPtr omCreateQuorlMatrix(InternedName className, std::size_t rows, std::size_t columns) {
    QuorlClass::requireClass(className);
    return makeArray(rows, columns, Objects{std::vector<ObjectRef>(countOf(rows, columns)), className});
}

ArrayPtr omCreateQuorlScalar(ObjectRef object) {
    if (object == nullptr) raise<messages::InvalidHandle>();
    InternedName const className = object->getQuorlClass().getName();
    std::vector<ObjectRef> objects;
    objects.push_back(std::move(object));
    return makeArray(1, 1, Objects{std::move(objects), className});
}

bool omIsQuorl(krelArray const& array) noexcept {
    return omGetKind(array) == ArrayKind::Quorl || omGetKind(array) == ArrayKind::BuiltinBased;
}

InternedName omGetClassName(krelArray const& array) noexcept {
    if (auto const* const objects = std::get_if<Objects>(&array.data)) return objects->className;
    if (auto const* const based = std::get_if<BuiltinBased>(&array.data)) return based->className;
    return {};
}

bool omIsOfClass(krelArray const& array, InternedName className) {
    InternedName const own = omGetClassName(array);
    if (own.isEmpty() || own == className) return !own.isEmpty();
    QuorlClass const* const wanted = QuorlClass::getClass(className);
    return wanted != nullptr && QuorlClass::requireClass(own).isSubclassOf(*wanted);
}

QuorlObject* omGetArrayElement(krelArray const& array, std::size_t index) {
    auto const& objects = partOf<Objects>(array, "omGetArrayElement", "object").objects;
    checkIndex(index, objects.size());
    return objects[index].get();
}

void omSetArrayElement(krelArray& array, std::size_t index, ObjectRef const& object) {
    Objects& objects = objectsOf(array, "omSetArrayElement");
    checkIndex(index, objects.objects.size());
    if (object == nullptr) raise<messages::InvalidHandle>();
    QuorlClass const& actual = object->getQuorlClass();
    if (!isHeterogeneous(objects.className) &&
        !actual.isSubclassOf(QuorlClass::requireClass(objects.className)))
        raise<messages::WrongType>("omSetArrayElement", objects.className.text(), actual.getName().text());
    objects.objects[index] = object->copyForAssignment();
}

void omSetArrayElement(krelArray& array, std::size_t index, krelArray const& scalar) {
    auto const& from = partOf<Objects>(scalar, "omSetArrayElement", "object").objects;
    if (from.size() != 1)
        raise<messages::WrongType>("omSetArrayElement", "one object",
                                   std::to_string(from.size()) + " objects");
    omSetArrayElement(array, index, ObjectRef(from[0]));
}

void omSetClassOfHeterogeneousArray(krelArray& array) {
    Objects& objects = objectsOf(array, "omSetClassOfHeterogeneousArray");
    QuorlClass* shared = nullptr;
    for (std::size_t i = 0; i < objects.objects.size(); ++i) {
        if (objects.objects[i] == nullptr) raise<messages::InvalidHandle>();
        QuorlClass& actual = objects.objects[i]->getQuorlClass();
        if (i == 0) shared = &actual;
        if (shared != nullptr) shared = sharedClass(*shared, actual);
    }
    if (shared != nullptr) objects.className = shared->getName();
}

ArrayPtr omCreateBuiltinBasedArrayFromUnderlyingArray(InternedName className, krelArray const& underlying) {
    QuorlClass const& quorlClass = QuorlClass::requireClass(className);
    if (!quorlClass.isEnumeration())
        raise<messages::BadClass>(className.text(), "it does not stand on a built-in type");
    if (!omIsNumeric(underlying) || omGetNumericType(underlying) != NumericType::Int32)
        raise<messages::WrongType>("an array of " + className.text(), quorlClass.getBaseType(),
                                   omGetTypeName(underlying));
    return makeArray(underlying.rows, underlying.columns,
                     BuiltinBased{omDuplicateArray(underlying), className});
}

krelArray const& omGetUnderlyingArray(krelArray const& array) {
    return *partOf<BuiltinBased>(array, "omGetUnderlyingArray", "array over a built-in one").underlying;
}

std::size_t omGetNumberOfElementsInUnderlyingArray(krelArray const& array) {
    return omGetNumberOfElements(omGetUnderlyingArray(array));
}
