#include "quorl/QuorlClass.hpp"

#include <algorithm>

#include "quorl/QuorlPackage.hpp"

namespace quorl {

namespace {

/// \returns the member of this name in the nearest class, superclasses in the order of registration.
template <class Member>
Member const* findMember(QuorlClass const& start,
                         std::vector<std::unique_ptr<Member>> const& (QuorlClass::*members)() const noexcept,
                         std::string_view name) {
    for (auto const& member : (start.*members)())
        if (member->getName() == name) return member.get();
    for (QuorlClass const* const superclass : start.getSuperclasses())
        if (Member const* const found = findMember<Member>(*superclass, members, name)) return found;
    return nullptr;
}

template <class Member>
bool hasName(std::vector<std::unique_ptr<Member>> const& members, std::string_view name) {
    return std::any_of(members.begin(), members.end(),
                       [&](auto const& member) { return member->getName() == name; });
}

} // namespace

QuorlClassInfo::~QuorlClassInfo() = default;
bool QuorlClassInfo::isAbstract() const {
    return false;
}
bool QuorlClassInfo::isSealed() const {
    return false;
}
bool QuorlClassInfo::isHandleClass() const {
    return false;
}
std::string const& QuorlClassInfo::getDescription() const {
    return InternedName().text();
}

QuorlClass::QuorlClass(std::unique_ptr<QuorlClassInfo> info)
    : _name(info->getName()), _info(std::move(info)) {}
QuorlClass::~QuorlClass() = default;

QuorlClass* QuorlClass::getClass(InternedName name) {
    if (!name.isEmpty() && name.entry()->loadedClass != nullptr) return name.entry()->loadedClass;
    return getClass(std::string_view(name.text()));
}

QuorlClass* QuorlClass::getClass(std::string_view name) {
    std::size_t const dot = name.rfind('.');
    if (dot == std::string_view::npos) return nullptr;
    QuorlPackage* const package = QuorlPackage::getPackage(name.substr(0, dot));
    return package == nullptr ? nullptr : package->getClass(name.substr(dot + 1));
}

QuorlClass& QuorlClass::requireClass(InternedName name) {
    QuorlClass* const found = getClass(name);
    if (found == nullptr) raise<messages::NoSuchClass>(name.text());
    return *found;
}

std::string_view QuorlClass::getSimpleName() const noexcept {
    std::string_view const name = _name.text();
    return name.substr(name.rfind('.') + 1);
}

void QuorlClass::load() {
    if (_state != State::Unloaded) return; // also while it loads: a class may look itself up
    _state = State::Loading;
    try {
        _info->initializeClass(this);
    } catch (...) {
        clear();
        throw;
    }
    _state = State::Loaded;
    _name.entry()->loadedClass = this;
}

void QuorlClass::clear() noexcept {
    _superclasses.clear();
    _methods.clear();
    _properties.clear();
    _literals.clear();
    _baseType.clear();
    _state = State::Unloaded;
}

void QuorlClass::addSuperclass(InternedName name) {
    QuorlClass& superclass = requireClass(name);
    std::string const what = "it cannot derive from " + name.text();
    if (superclass._state == State::Loading)
        raise<messages::BadClass>(_name.text(), what + ", which derives from it");
    if (superclass._info->isSealed() || superclass.isEnumeration())
        raise<messages::BadClass>(_name.text(), what + ", which is sealed");
    if (std::find(_superclasses.begin(), _superclasses.end(), &superclass) != _superclasses.end())
        raise<messages::DuplicateName>(_name.text(), name.text());
    _superclasses.push_back(&superclass);
}

void QuorlClass::checkName(std::string_view name, bool isMethod) const {
    if (hasName(_properties, name) || hasName(_literals, name) || (!isMethod && hasName(_methods, name)))
        raise<messages::DuplicateName>(_name.text(), name);
}

QuorlMethodInfo& QuorlClass::addMethod(std::unique_ptr<QuorlMethodInfo> method) {
    std::string const& name = method->getName();
    checkName(name, true);
    if (method->getSignature() == nullptr)
        raise<messages::BadSignature>(_name.text() + "." + name, "there is none");
    for (auto const& other : _methods)
        if (other->getName() == name &&
            other->getSignature()->getInputs() == method->getSignature()->getInputs())
            raise<messages::DuplicateName>(_name.text(), name);
    _methods.push_back(std::move(method));
    return *_methods.back();
}

QuorlPropInfo& QuorlClass::addProperty(std::unique_ptr<QuorlPropInfo> property) {
    checkName(property->getName(), false);
    _properties.push_back(std::move(property));
    return *_properties.back();
}

QuorlEnumInfo& QuorlClass::addEnumValue(std::unique_ptr<QuorlEnumInfo> literal) {
    checkName(literal->getName(), false);
    for (auto const& other : _literals)
        if (other->getNumericValue() == literal->getNumericValue())
            raise<messages::DuplicateName>(_name.text(), "literal of the value of " + literal->getName());
    setBaseType("int32 scalar");
    _literals.push_back(std::move(literal));
    return *_literals.back();
}

void QuorlClass::setBaseType(std::string_view type) {
    if (type != "int32 scalar")
        raise<messages::BadClass>(_name.text(),
                                  "an enumeration stands on int32 scalar, not on " + std::string(type));
    _baseType = type;
}

QuorlPropInfo const* QuorlClass::findProperty(std::string_view name) const {
    return findMember<QuorlPropInfo>(*this, &QuorlClass::getProperties, name);
}

QuorlEnumInfo const* QuorlClass::findLiteral(std::string_view name) const {
    return findMember<QuorlEnumInfo>(*this, &QuorlClass::getEnumValues, name);
}

std::vector<QuorlMethodInfo*> QuorlClass::findMethods(std::string_view name) const {
    std::vector<QuorlMethodInfo*> found;
    for (auto const& method : _methods)
        if (method->getName() == name && !method->isConstructor()) found.push_back(method.get());
    for (QuorlClass const* const superclass : _superclasses) {
        if (!found.empty()) break;
        found = superclass->findMethods(name);
    }
    return found;
}

bool QuorlClass::isSubclassOf(QuorlClass const& other) const noexcept {
    return this == &other ||
           std::any_of(_superclasses.begin(), _superclasses.end(),
                       [&](QuorlClass* superclass) { return superclass->isSubclassOf(other); });
}

} // namespace quorl
