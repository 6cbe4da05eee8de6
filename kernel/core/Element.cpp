// The untyped handle and the body's own operations: thin faces of the write path.

#include "ModelImpl.hpp"
#include "brant/zero/Builder.hpp"
#include "brant/zero/Collection.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Query.hpp"
#include "brant/zero/Slab.hpp"
#include "brant/zero/Storage.hpp"
#include "brant/zero/Text.hpp"
#include "brant/zero/meta/KernelPackage.hpp"
#include "brant/zero/meta/Names.hpp"

namespace brant::zero {

void (*ElementImpl::m_callback)(ElementImpl* element, void* collection) = nullptr;
ElementImpl::~ElementImpl() = default;

ReflectionPrivateTag const ReflectionPrivateTag::PUBLIC_ACCESS;
ReflectionPrivateTag const ReflectionPrivateTag::NO_PROXY_RESOLVE;
ReflectionPrivateTag const ReflectionPrivateTag::IN_MEMORY_ONLY;

bool operator==(ProxyId const& a, ProxyId const& b) noexcept {
    return a.model == b.model && a.element == b.element && a.isExternal() == b.isExternal() &&
           (!a.isExternal() || *a.external == *b.external);
}

// The handle.

void ModelElement::throwDead() const {
    if (impl_ == nullptr) throw DeadHandle(HandleState::Null);
    switch (impl_->liveness()) {
    case Liveness::RolledBack:
        throw DeadHandle(HandleState::RolledBack);
    case Liveness::ModelGone:
        throw DeadHandle(HandleState::ModelGone);
    default:
        throw DeadHandle(HandleState::Destroyed);
    }
}

boost::uuids::uuid ModelElement::uuid() const {
    return checked().uuid();
}
Model ModelElement::getModel() const {
    return checked().getModel();
}
meta::Class const& ModelElement::getMetaClass() const {
    return checked().getMetaClass();
}
meta::Class const& ModelElement::metaClass() {
    return meta::KernelPackage::getInstance().modelElementClass();
}
ModelElement ModelElement::container() const {
    return checked().container();
}
meta::Property ModelElement::containmentFeature() const {
    return checked().containmentFeature();
}
bool ModelElement::isProxy() const {
    return checked().isProxy();
}
void ModelElement::destroy() const {
    checked().destroy();
}
bool ModelElement::hasPropertyValue(meta::Property const& property, ReflectionPrivateTag const& tag) const {
    return checked().hasPropertyValue(property, tag);
}
Value ModelElement::getPropertyValue(meta::Property const& property, ReflectionPrivateTag const& tag) const {
    return checked().getPropertyValue(property, tag);
}
void ModelElement::setPropertyValue(meta::Property const& property, Value const& value,
                                    ReflectionPrivateTag const& tag) const {
    checked().setPropertyValue(property, value, tag);
}
Value ModelElement::invoke(meta::Operation const& operation, std::vector<Value> const& arguments,
                           ReflectionPrivateTag const& tag) const {
    return checked().invoke(operation, arguments, tag);
}

// The body.

void* ModelElementImpl::operator new(std::size_t size) {
    return slab::allocate(size);
}
void ModelElementImpl::operator delete(void* memory, std::size_t size) noexcept {
    slab::deallocate(memory, size);
}

ModelElementImpl::ModelElementImpl(ModelImpl* model, boost::uuids::uuid const& uuid)
    : ElementImpl(uuid), owner_(model) {
    if (model == nullptr || !model->valid()) reportException(brant0::messages::CannotCreateWithoutModel());
    if (!Core::makingProxy()) model->enter(*this);
}

ModelElementImpl::~ModelElementImpl() = default;

void ModelElementImpl::dispose() noexcept {
    beginDestruction();
    if (isProxy() && model() != nullptr) owner_->removeProxy(*this);
    Core::dropLinks(*this);
    delete this;
}

meta::Class const& ModelElementImpl::getMetaClass() const {
    return classTable().metaClass();
}
Model ModelElementImpl::getModel() const {
    return Model(model());
}
std::string ModelElementImpl::identifier() const {
    return toString(uuid_);
}
meta::Property ModelElementImpl::containmentFeature() const {
    return Core::propertyOf(feature_);
}
ProxyId ModelElementImpl::getProxyId() const {
    return isProxy() && model() != nullptr ? owner_->proxyId(*this) : getPersistentProxyId(true);
}
ProxyId ModelElementImpl::getPersistentProxyId(bool) const {
    return {u"", toUtf16(toString(uuid_)).value(), nullptr};
}

void ModelElementImpl::makeUncontained() {
    if (!isTopLevel()) Core::uncontain(*this);
}
void ModelElementImpl::checkCircularContainment(ModelElement const& newContainer) const {
    if (newContainer != nullptr) Core::requireAcyclic(*this, newContainer.get());
}
void ModelElementImpl::checkCompatibleModel(ModelElementImpl const* target, meta::Property const&) const {
    Core::requireSameModel(this, target);
}
void ModelElementImpl::basicSetContainer(ModelElementImpl* container, meta::Property const& feature,
                                         unsigned long) {
    if (container != nullptr) Core::requireAcyclic(*this, container);
    Core::relink(*this, container, container == nullptr ? nullptr : &Core::rowOf(feature));
}
void ModelElementImpl::_setContainedByThis(ModelElementImpl* child, meta::Property const& feature) {
    schema::PropertyRow const& row = Core::rowOf(feature);
    if (child->container_ == this && child->feature_ == &row) return;
    Core::requireAcyclic(*child, this);
    Core::takeOut(*child);
    Core::relink(*child, this, &row);
}
void ModelElementImpl::_basicSetUncontained(ModelElementImpl* child) {
    Core::relink(*child, nullptr, nullptr);
}
void ModelElementImpl::_inverseAddThis(ModelElementImpl* target, meta::Property const& opposite, bool) {
    if (target != nullptr && !target->isProxy()) Core::inverseAdd(*target, this, Core::rowOf(opposite));
}
void ModelElementImpl::_inverseRemoveThis(ModelElementImpl* target, meta::Property const& opposite) {
    if (target != nullptr && !target->isProxy()) Core::inverseRemove(*target, this, Core::rowOf(opposite));
}
bool ModelElementImpl::_inverseContainsThis(ModelElementImpl const* target,
                                            meta::Property const& opposite) const {
    return target != nullptr && Core::inverseContains(*target, this, Core::rowOf(opposite));
}
void ModelElementImpl::_basicAdd(ReferenceCollection* collection, ModelElement const& element) {
    collection->basicAdd(element);
}
void ModelElementImpl::_basicRemove(ReferenceCollection* collection, ModelElement const& element) {
    collection->basicRemove(element);
}
void ModelElementImpl::_basicClear(ReferenceCollection* collection) {
    collection->basicClear();
}
void ModelElementImpl::_basicCopyValues(ReferenceCollection* target, ReferenceCollection const* source) {
    target->basicCopyValues(*source);
}
bool ModelElementImpl::_basicContainsProxyTo(ReferenceCollection* collection, ModelElement const& element) {
    return collection->basicContainsProxyTo(element);
}

void ModelElementImpl::notifyCreated() {
    Core::announce(*this);
}

void ModelElementImpl::notifyModifying(unsigned long index) {
    if (model() != nullptr && owner_->transactions().depth() == 0 && !owner_->transactions().restoring())
        throw std::logic_error("a change was announced outside a transaction");
    if (index == 0)
        Core::recordLink(*this);
    else if (schema::PropertyRow const* row = classTable().byIndex(index))
        Core::notifyModifying(*this, *row);
}

void ModelElementImpl::destroy() {
    Core::destroy(*this);
}
void ModelElementImpl::destroyRecursively(ModelElementImpl* child, bool, bool, bool) {
    Core::destroy(*child);
}
void ModelElementImpl::doDestroy(bool, bool) {
    Core::Level level(*this);
    Core::destroyContents(*this);
    level.commit();
}

meta::Property ModelElementImpl::getPropertyByIndex(unsigned long index) const {
    static_cast<void>(getMetaClass()); // makes sure that the property objects exist
    return Core::propertyOf(classTable().byIndex(index));
}

void ModelElementImpl::inverseAdd(ModelElement const& element, meta::Property const& property) {
    Core::inverseAdd(*this, element.get(), Core::rowFor(*this, property));
}
void ModelElementImpl::inverseRemove(ModelElement const& element, meta::Property const& property) {
    Core::inverseRemove(*this, element.get(), Core::rowFor(*this, property));
}
bool ModelElementImpl::inverseContainsProxyTo(ModelElement const& element,
                                              meta::Property const& property) const {
    return Core::inverseContainsProxyTo(*this, element.get(), Core::rowFor(*this, property));
}

void ModelElementImpl::disassociateIncoming() {
    Core::requireWritable(*this);
    Core::Level level(*this);
    Core::disassociate(*this);
    level.commit();
}

void ModelElementImpl::convertReferencesToProxies(bool, boost::optional<ProxyId>&) {
    schema::ClassTable const& table = classTable();
    for (std::size_t i = 1; i < table.count; ++i) {
        schema::PropertyRow const& row = *table.stored[i];
        if (!row.refersToElements() || row.contained()) continue;
        if (row.kind == schema::PropertyKind::Reference)
            Core::basicSetReference(*this, row, nullptr);
        else if (row.kind == schema::PropertyKind::ManyReference)
            Core::dropContents(Core::collection(*this, row));
    }
}

void ModelElementImpl::basicDisassociateAll() {
    Core::dropLinks(*this);
    if (valid_ && model() != nullptr && container_ != nullptr) {
        container_ = nullptr;
        feature_ = nullptr;
        owner_->enterTopLevel(*this);
    }
}

void ModelElementImpl::invalidate() {
    if (m_callback != nullptr)
        for (schema::ClassTable const* cls = &classTable(); cls != nullptr; cls = cls->base)
            for (std::uint16_t i = 0; i < cls->rowCount; ++i)
                if (cls->rows[i].stored() && cls->rows[i].many())
                    m_callback(this, &Core::collection(*this, cls->rows[i]));
    valid_ = false;
}

void ModelElementImpl::convertToProxy(meta::Property const& property, ProxyId const& id,
                                      ModelElement const& target) {
    schema::PropertyRow const& row = Core::rowFor(*this, property);
    Core::Level level(*this);
    ModelElement const proxy = Model(owner_).createProxy(target.get()->getMetaClass(), id);
    if (row.kind == schema::PropertyKind::Reference) {
        Core::recordReference(*this, row);
        Core::basicSetReference(*this, row, proxy.get());
    } else {
        Core::replaceByProxy(static_cast<ReferenceCollection&>(Core::collection(*this, row)), target, proxy);
    }
    level.commit();
}

std::unique_ptr<Changes> ModelElementImpl::createChanges() const {
    return std::make_unique<Changes>(uuid_, getModel(), getMetaClass(), classTable().count - 1ul);
}
std::unique_ptr<Storage> ModelElementImpl::createStorage() const {
    return std::make_unique<Storage>(uuid_, getModel(), getMetaClass(), classTable().count);
}

void ModelElementImpl::copyValue(Storage* storage, unsigned long index) const {
    if (index == 0)
        storage->setOldContainer(container(), containmentFeature());
    else if (schema::PropertyRow const* row = classTable().byIndex(index))
        storage->copyFrom(*this, *row);
}

void ModelElementImpl::copyStateFromStorage(Storage* storage) {
    Model const keep = getModel();
    schema::ClassTable const& table = classTable();
    // Many-valued attributes last, as nothing refers to them.
    for (bool manyAttributes : {false, true})
        for (std::size_t i = 1; i < table.count; ++i) {
            schema::PropertyRow const& row = *table.stored[i];
            if (storage->changed(i) && (row.kind == schema::PropertyKind::ManyAttribute) == manyAttributes)
                storage->restoreTo(*this, row);
        }
}

// Query roots.

query::AbstractQuery::~AbstractQuery() = default;

Constrainables::Constrainables(query::AbstractQuery& query, meta::Class const& metaClass,
                               query::SearchClassMatchMode mode)
    : query_(query), metaClass_(metaClass), mode_(mode) {}

} // namespace brant::zero
