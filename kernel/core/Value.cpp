#include "brant/zero/Value.hpp"

#include "brant/zero/Collection.hpp"
#include "brant/zero/MetaObject.hpp"
#include "brant/zero/meta/Names.hpp"

#include <utility>

namespace brant::zero {

namespace {

ValueFlags shapeOf(meta::Property const& property) {
    // The recorded multiplicity does not tell ordered collections from unordered ones.
    auto const multiplicity = static_cast<ValueFlags>(property.getMultiplicity());
    bool const unordered = multiplicity == ValueFlags::Sequence && !property.getIsOrdered();
    return unordered ? ValueFlags::Set : multiplicity;
}

/// \returns the body of a class, null when the type is none.
meta::Class::Impl const* classBody(meta::Type const& type) noexcept {
    meta::Type::Impl const* body = type.get();
    bool const isClass = body != nullptr && body->classTable().conformsTo(meta::Class::Impl::table);
    return isClass ? static_cast<meta::Class::Impl const*>(body) : nullptr;
}

} // namespace

ValueMeta::ValueMeta(meta::Property const& property)
    : type_(property.getType()), property_(property), flags_(shapeOf(property)) {}

Value::Value(meta::Type const& type, unsigned long const& word, ValueFlags flags) : ValueMeta(type, flags) {
    take(static_cast<unsigned long>(word));
}

Value::Value(Value const& other)
    : ValueMeta(other),
      data_(other.operations_ != nullptr ? other.operations_->clone(other.data_) : other.data_),
      operations_(other.operations_), extractor_(other.extractor_) {}

Value::Value(Value&& other) noexcept
    : ValueMeta(std::move(other)), data_(std::exchange(other.data_, nullptr)),
      operations_(std::exchange(other.operations_, nullptr)),
      extractor_(std::exchange(other.extractor_, nullptr)) {}

Value& Value::operator=(Value other) noexcept {
    ValueMeta::operator=(std::move(other));
    std::swap(data_, other.data_);
    std::swap(operations_, other.operations_);
    std::swap(extractor_, other.extractor_);
    return *this;
}

Value::~Value() {
    if (operations_ != nullptr) operations_->destroy(data_);
}

Value Value::refer(meta::Property const& property, AbstractOwnedCollection const& collection) {
    Value result{ValueMeta(property)};
    result.data_ = const_cast<AbstractOwnedCollection*>(&collection);
    return result;
}

AbstractOwnedCollection* Value::collection() const noexcept {
    return operations_ == nullptr ? static_cast<AbstractOwnedCollection*>(data_) : nullptr;
}

std::vector<Value> Value::extract() const {
    return extractor_ == nullptr ? std::vector<Value>() : extractor_(*this);
}

unsigned long Value::getEnumerationWord(schema::EnumTable const& enumeration) const {
    requireOne(enumeration.object);
    return isEmpty() ? 0 : payload<unsigned long>();
}

bool operator==(Value const& a, Value const& b) {
    if (a.flags() != b.flags()) return false;
    if (a.operations_ == nullptr || b.operations_ == nullptr)
        return a.data_ == b.data_ && a.getType() == b.getType();
    if (*a.operations_->payload != *b.operations_->payload || !a.operations_->equal(a.data_, b.data_))
        return false;
    // The type of an element follows from the element, or says only where a null handle came from.
    return classBody(a.getType()) != nullptr || a.getType() == b.getType();
}

std::uint64_t Value::hash() const {
    return operations_ == nullptr ? std::hash<void const*>()(data_) : operations_->hash(data_);
}

void Value::refuse() const {
    reportException(brant0::messages::CannotCastIncompatibleTypes(getType() ? meta::qualifiedName(getType())
                                                                            : std::u16string(u"no type")));
}

bool Value::hasType(ElementImpl const* type) const noexcept {
    return type != nullptr && getType().get() == type;
}

bool Value::isOfClass(schema::ClassTable const& table) const {
    // Classes that were made without a table have one somewhere among their superclasses, or conform to
    // nothing.
    meta::Class cls(const_cast<meta::Class::Impl*>(classBody(getType())));
    for (; cls; cls = cls.getSuperclass())
        if (auto const* own = cls.get()->description<schema::ClassTable>()) return own->conformsTo(table);
    return false;
}

void Value::requireShape(ValueFlags flags) const {
    if (this->flags() != flags || (flags != ValueFlags::One && isManaged())) refuse();
}

void Value::requireOne(ElementImpl const* type) const {
    requireShape(ValueFlags::One);
    if (!hasType(type)) refuse();
}

void Value::requireOptional(ElementImpl const* type) const {
    if (flags() > ValueFlags::One || !hasType(type)) refuse();
}

void Value::requireElement(schema::ClassTable const& table) const {
    if (flags() > ValueFlags::One || !isOfClass(table)) refuse();
}

void Value::requireContainer(ValueFlags flags, ElementImpl const* type) const {
    requireShape(flags);
    if (!hasType(type)) refuse();
}

void Value::requireElements(ValueFlags flags, schema::ClassTable const& table) const {
    requireShape(flags);
    if (!isOfClass(table)) refuse();
}

#define BRANT0_INSTANTIATE(T) template value::Operations const* Value::operationsOf<T>() noexcept;
BRANT0_FOR_EACH_SHARED_PAYLOAD(BRANT0_INSTANTIATE)
#undef BRANT0_INSTANTIATE

} // namespace brant::zero
