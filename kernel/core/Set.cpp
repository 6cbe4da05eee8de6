#include "brant/zero/Set.hpp"

#include "WithProxies.ipp"
#include "brant/zero/Standalone.hpp"

namespace brant::zero {

template class ReferenceCollectionWithProxies<ReferenceCollection, SetMembers>;

void ReferenceSet::addOne(ModelElementImpl* element) {
    if (element == nullptr || !element->valid()) return;
    Core::requireSameModel(owner(), element);
    if (element->isProxy()) return addProxy(ModelElement(element));
    if (locate(element) != entries().end()) return;
    Operation operation(*this);
    recordedEmplace(element);
    operation.commit();
}

void ReferenceSet::genericAdd(ModelElement const& element) {
    if (!element) return;
    requireConforming(element);
    addOne(element.get());
}

std::unique_ptr<AbstractOwnedCollection> ReferenceSet::snapshot() const {
    auto copy = std::make_unique<Standalone<ReferenceSet>>(nullptr, row());
    copy->copyContent(*this);
    return copy;
}

} // namespace brant::zero
