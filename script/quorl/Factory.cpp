#include "quorl/Factory.hpp"

#include "brant/zero/Text.hpp"

namespace quorl::factory {

QuorlFactoryClassInfo::QuorlFactoryClassInfo(std::string_view name, std::string description)
    : _name(internal::makeInterned(name)), _description(std::move(description)) {}

void QuorlFactoryClassInfo::allocateInstance(void**) const {
    raise<messages::CannotInstantiate>(_name.text(), "the class has no objects of its own");
}
void QuorlFactoryClassInfo::deallocateInstance(void**) const noexcept {}
void* QuorlFactoryClassInfo::getSelfPointer(void** slot) const noexcept {
    return *slot;
}
bool QuorlFactoryClassInfo::isValidInstance(void** slot) const noexcept {
    return *slot != nullptr;
}
void QuorlFactoryClassInfo::copyInstance(void**, void**) const {
    raise<messages::CannotInstantiate>(_name.text(), "its objects are no values that could be copied");
}
void QuorlFactoryClassInfo::bindInstance(void**, void*) const {
    raise<messages::CannotInstantiate>(_name.text(), "its objects stand for no element");
}

std::u16string extractString(krelArray const& value) {
    if (omIsString(value) && omGetNumberOfElements(value) == 1) return omGetString(value, 0);
    std::u16string text;
    if (!omIsChar(value) || !brant::zero::appendUtf16(text, omGetChars(value)))
        raise<brant0::messages::InvalidValue>();
    return text;
}

std::string extractChars(krelArray const& value) {
    if (omIsChar(value)) return omGetChars(value);
    std::string text;
    if (!omIsString(value) || omGetNumberOfElements(value) != 1 ||
        !brant::zero::appendUtf8(text, omGetString(value, 0)))
        raise<brant0::messages::InvalidValue>();
    return text;
}

namespace impl {

PropertyGetter::~PropertyGetter() = default;
PropertySetter::~PropertySetter() = default;

PropertyImpl::PropertyImpl(std::string name, unsigned attributes, std::unique_ptr<PropertyGetter> getter,
                           std::unique_ptr<PropertySetter> setter)
    : QuorlPropInfo(std::move(name), attributes), _getter(std::move(getter)), _setter(std::move(setter)) {}

ArrayPtr PropertyImpl::getQuorlArray(QuorlObject& self) const {
    return _getter->get(validateSelfPointer(self));
}

void PropertyImpl::setQuorlArray(QuorlObject& self, krelArray const& value) const {
    void* const body = validateSelfPointer(self);
    if (_setter == nullptr) raise<brant0::messages::CannotSetReadOnlyProperty>(getName());
    _setter->set(body, value, getName());
}

} // namespace impl
} // namespace quorl::factory
