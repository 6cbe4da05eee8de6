#include "brant/zero/Map.hpp"

#include "WithProxies.ipp"
#include "brant/zero/Standalone.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"

#include <algorithm>

namespace brant::zero {

template class ReferenceCollectionWithProxies<GenericMapInterface, MapMembers>;

ModelElementImpl* ReferenceMap::get(std::u16string_view key) const {
    auto const entry = entries().find(key);
    return entry == entries().end() ? nullptr : entry->second.get();
}

void ReferenceMap::insertOne(ModelElementImpl* element, CollisionResolution resolution) {
    if (element == nullptr || !element->valid()) return;
    Core::requireSameModel(owner(), element);
    if (element->isProxy()) return addProxy(ModelElement(element));
    auto const present = entries().find(MapMembers::key(row(), *element));
    if (present == entries().end()) {
        Operation operation(*this);
        join(element);
        operation.commit();
        return;
    }
    if (present->second.get() == element || resolution == CollisionResolution::Keep) return;
    if (resolution == CollisionResolution::Report) reportException(brant0::messages::UniquenessConstraint());
    Operation operation(*this);
    eraseEntry(present);
    join(element);
    operation.commit();
}

void ReferenceMap::join(ModelElementImpl* element) {
    if (!owns()) {
        recordedInsert(element);
    } else if (holds(*element)) {
        // Here already, under the key that it had when it came.
        recordedErase(element);
        recordedInsert(element);
    } else {
        Core::contain(*owner(), row(), *element, Core::append);
    }
}

bool ReferenceMap::eraseKey(std::u16string_view key) {
    auto const entry = entries().find(key);
    if (entry == entries().end()) return false;
    Operation operation(*this);
    eraseEntry(entry);
    operation.commit();
    return true;
}

void ReferenceMap::recordedInsert(ModelElementImpl* element) {
    if (!recordedEmplace(element)) reportException(brant0::messages::UniquenessConstraint());
}

void ReferenceMap::recordedErase(ModelElementImpl* element) {
    auto entry = locate(element);
    if (entry == entries().end())
        entry = std::find_if(entries().begin(), entries().end(),
                             [element](auto const& other) { return other.second.get() == element; });
    if (entry != entries().end()) recordedExtract(entry);
}

void ReferenceMap::genericAdd(ModelElement const& element) {
    if (!element) return;
    requireConforming(element);
    insertOne(element.get(), CollisionResolution::Report);
}

std::unique_ptr<AbstractOwnedCollection> ReferenceMap::snapshot() const {
    auto copy = std::make_unique<Standalone<ReferenceMap>>(nullptr, row());
    copy->copyContent(*this);
    return copy;
}

// Reflection.

ModelElement ReferenceMap::genericGet(Value const& key) const {
    return ModelElement(get(key.getValue<std::u16string>()));
}

meta::Type ReferenceMap::getQualifierType() const {
    static meta::Type const type = meta::requireType("String");
    return type;
}

std::vector<Value> ReferenceMap::genericKeys() const {
    return getAllKeys();
}

std::vector<Value> ReferenceMap::getAllKeys() const {
    meta::Type const type = getQualifierType();
    std::vector<Value> keys;
    keys.reserve(size());
    for (auto const& [key, element] : entries())
        keys.push_back(Value::own<std::u16string>(type, ValueFlags::One, key));
    return keys;
}

} // namespace brant::zero
