#include "quorl/BindingRegistry.hpp"

#include <unordered_map>
#include <unordered_set>

namespace quorl {

namespace {

// Never destroyed: script objects may be released while the process winds down.
std::unordered_map<void*, QuorlObject*>& bindings() {
    static auto& map = *new std::unordered_map<void*, QuorlObject*>;
    return map;
}

std::unordered_set<void const*>& unconstructed() {
    static auto& set = *new std::unordered_set<void const*>;
    return set;
}

} // namespace

ObjectRef QuorlObject::allocate(QuorlClass& quorlClass) {
    auto const destroy = [](QuorlObject* object) { delete object; };
    std::unique_ptr<QuorlObject, decltype(destroy)> object(new QuorlObject(quorlClass), destroy);
    quorlClass.getInfo().allocateInstance(&object->_slot);
    return ObjectRef(object.release());
}

ObjectRef QuorlObject::copyForAssignment() {
    QuorlClassInfo const& info = _class->getInfo();
    if (info.isHandleClass()) return ObjectRef(this);
    if (!isValid()) raise<messages::InvalidHandle>();
    auto const destroy = [](QuorlObject* object) { delete object; };
    std::unique_ptr<QuorlObject, decltype(destroy)> copy(new QuorlObject(*_class), destroy);
    info.copyInstance(&copy->_slot, &_slot);
    return ObjectRef(copy.release());
}

void* QuorlObject::getSelfPointer() const noexcept {
    return _class->getInfo().getSelfPointer(&_slot);
}

bool QuorlObject::isValid() const noexcept {
    return _class->getInfo().isValidInstance(&_slot);
}

void QuorlObject::release(QuorlObject* object) noexcept {
    // An object that the registry knows not, or no more, must not take another's place away.
    if (object->_implementation != nullptr &&
        factory::basic::BindingRegistry::find(object->_implementation) == object)
        factory::basic::BindingRegistry::remove(object->_implementation);
    object->_class->getInfo().deallocateInstance(&object->_slot);
    delete object;
}

namespace factory {

namespace basic {

void BindingRegistry::bind(QuorlObject& object, void* implementation) {
    object.getQuorlClass().getInfo().bindInstance(&object._slot, implementation);
    object._implementation = implementation;
}

ObjectRef BindingRegistry::make(void* implementation, InternedName className) {
    if (implementation == nullptr) raise<messages::InvalidHandle>();
    ObjectRef object = QuorlObject::allocate(QuorlClass::requireClass(className));
    bind(*object, implementation);
    return object;
}

ObjectRef BindingRegistry::announce(void* implementation, InternedName className, bool* created) {
    QuorlObject* const known = find(implementation);
    if (created != nullptr) *created = known == nullptr;
    if (known != nullptr) return ObjectRef(known);
    ObjectRef object = make(implementation, className);
    bindings().emplace(implementation, object.get());
    return object;
}

void BindingRegistry::announceForConstructor(void* implementation, InternedName className, krelArray& array,
                                             bool* created) {
    QuorlObject* const known = find(implementation);
    if (created != nullptr) *created = known == nullptr;
    if (known != nullptr) {
        omSetArrayElement(array, 0, ObjectRef(known));
        return;
    }
    QuorlObject* const object = omGetArrayElement(array, 0);
    if (implementation == nullptr || object == nullptr) raise<messages::InvalidHandle>();
    QuorlClass const& quorlClass = object->getQuorlClass();
    if (quorlClass.getName() != className || object->_implementation != nullptr)
        raise<messages::CannotInstantiate>(className.text(), "the array has no new object of this class");
    bind(*object, implementation);
    bindings().emplace(implementation, object);
}

ObjectRef BindingRegistry::announceWithoutStoring(void* implementation, InternedName className) {
    return make(implementation, className);
}

bool BindingRegistry::remove(void* implementation) noexcept {
    return bindings().erase(implementation) != 0;
}

QuorlObject* BindingRegistry::find(void* implementation) noexcept {
    auto const found = bindings().find(implementation);
    return found == bindings().end() ? nullptr : found->second;
}

std::size_t BindingRegistry::size() noexcept {
    return bindings().size();
}

} // namespace basic

namespace impl {

void* validateSelfPointer(QuorlObject const& self) {
    if (!self.isValid()) raise<messages::InvalidHandle>();
    return self.getSelfPointer();
}

void* validateSelfPointer(krelArray const& self, QuorlClass const& quorlClass) {
    if (!omIsOfClass(self, quorlClass.getName()))
        raise<messages::WrongType>("the object of the call", quorlClass.getName().text(),
                                   omGetTypeName(self));
    QuorlObject* const object = omGetNumberOfElements(self) == 1 ? omGetArrayElement(self, 0) : nullptr;
    if (object == nullptr) raise<messages::InvalidHandle>();
    return validateSelfPointer(*object);
}

} // namespace impl

void CopyableSupport::addToUnconstructedSet(void* body) {
    unconstructed().insert(body);
}

bool CopyableSupport::isInUnconstructedSet(void const* body) noexcept {
    return unconstructed().count(body) != 0;
}

bool CopyableSupport::removeFromUnconstructedSet(void const* body) noexcept {
    return unconstructed().erase(body) != 0;
}

} // namespace factory
} // namespace quorl
