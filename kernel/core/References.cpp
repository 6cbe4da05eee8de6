// Single references and container ends, and the far side of an association.

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/ReferenceSequence.hpp"

namespace brant::zero {

using schema::PropertyKind;

namespace {

/// A dead handle given to a setter counts as null.
ModelElementImpl* alive(ModelElementImpl* target) noexcept {
    return target != nullptr && target->valid() ? target : nullptr;
}

} // namespace

void Core::refuseProxy() {
    reportException(brant0::messages::CannotModifyProxy());
}

Core::Body* Core::settleReference(Body const& self, Row const& row) {
    Body*& stored = field<Body*>(const_cast<Body&>(self), row);
    if (!stored->valid()) {
        if (stored->owner_ == self.owner_ && stored->liveness_ != Liveness::ModelGone) return stored;
        basicSetReference(const_cast<Body&>(self), row, nullptr);
        return nullptr;
    }
    ModelImpl* model = self.model();
    if (model == nullptr) return stored;
    Body* result = model->resolveProxy(&self, stored);
    // Reading moves nothing: what an owner does not hold yet stays away.
    auto const pointsBack = [&] {
        if (row.owning()) return result->container_ == &self && result->feature_ == &row;
        return row.opposite == nullptr || inverseContains(*result, &self, *row.opposite);
    };
    if (result != nullptr && result->valid() && !result->isProxy() && pointsBack()) {
        Body& writable = const_cast<Body&>(self);
        // Resolution is no change, but a target that may vanish again must give the placeholder back.
        if (isNew(*result)) recordReference(writable, row);
        basicSetReference(writable, row, result);
    }
    return stored;
}

bool Core::hasReference(Body const& self, Row const& row) noexcept {
    if (row.kind == PropertyKind::ContainerEnd) return self.containmentRow() == row.opposite;
    Body const* stored = field<Body*>(self, row);
    return stored != nullptr && stored->valid();
}

void Core::basicSetReference(Body& self, Row const& row, Body* target) noexcept {
    if (target != nullptr) target->addRef();
    Body* old = std::exchange(field<Body*>(self, row), target);
    if (old != nullptr) old->removeRef();
}

void Core::basicSetContainerEnd(Body& self, Row const& row, Body* target) {
    if (target != nullptr) requireAcyclic(self, target);
    relink(self, target, target == nullptr ? nullptr : row.opposite);
}

void Core::setReference(Body& self, Row const& row, Body* target) {
    requireWritable(self);
    target = alive(target);
    if (row.kind == PropertyKind::ContainerEnd) {
        if (readContainerEnd(self, row) == target) return;
        requireAcyclic(self, target);
        Level level(self);
        if (target == nullptr) {
            if (self.containmentRow() == row.opposite) uncontain(self);
        } else {
            requireSameModel(&self, target);
            contain(*target, *row.opposite, self, append);
        }
        level.commit();
        return;
    }
    if (readReference(self, row) == target) return;
    requireSameModel(&self, target);
    Level level(self);
    if (row.owning())
        setContained(self, row, target);
    else
        replaceField(self, row, target);
    level.commit();
}

void Core::replaceField(Body& self, Row const& row, Body* target) {
    recordReference(self, row);
    basicSetReference(self, row, target);
}

void Core::setContained(Body& self, Row const& row, Body* target) {
    if (target != nullptr && !target->isProxy()) {
        contain(self, row, *target, append);
        return;
    }
    Body* old = field<Body*>(self, row);
    if (old != nullptr && old->valid() && old->container_ == &self && old->feature_ == &row) uncontain(*old);
    if (field<Body*>(self, row) != target) replaceField(self, row, target);
}

void Core::addReference(Body& self, Row const& row, Body* target) {
    if (row.kind == PropertyKind::ManyReference)
        sequence(self, row).addOne(target);
    else if (row.kind == PropertyKind::Map)
        field<ReferenceMap>(self, row).insertOne(target, CollisionResolution::Report);
    else
        setReference(self, row, target);
}

void Core::inverseAdd(Body& self, Body* element, Row const& row) {
    switch (row.kind) {
    case PropertyKind::ContainerEnd:
        contain(*element, *row.opposite, self, append);
        break;
    case PropertyKind::Reference:
        if (row.owning())
            setContained(self, row, element);
        else
            replaceField(self, row, element);
        break;
    case PropertyKind::ManyReference:
    case PropertyKind::Map: {
        auto& members = static_cast<ReferenceCollection&>(collection(self, row));
        recordTouch(members);
        members.basicAdd(ModelElement(element));
        break;
    }
    default:
        break;
    }
}

void Core::inverseRemove(Body& self, Body* element, Row const& row) {
    switch (row.kind) {
    case PropertyKind::ContainerEnd:
        if (self.containmentRow() == row.opposite) relink(self, nullptr, nullptr);
        break;
    case PropertyKind::Reference:
        replaceField(self, row, nullptr);
        break;
    case PropertyKind::ManyReference:
    case PropertyKind::Map:
        static_cast<ReferenceCollection&>(collection(self, row)).basicRemove(ModelElement(element));
        break;
    default:
        break;
    }
}

bool Core::inverseContains(Body const& self, Body const* element, Row const& row) {
    switch (row.kind) {
    case PropertyKind::ContainerEnd:
        return readContainerEnd(self, row) == element;
    case PropertyKind::Reference:
        return field<Body*>(self, row) == element;
    case PropertyKind::ManyReference:
    case PropertyKind::Map:
        return static_cast<ReferenceCollection const&>(collection(self, row))
            .genericContains(ModelElement(const_cast<Body*>(element)));
    default:
        return false;
    }
}

bool Core::inverseContainsProxyTo(Body const& self, Body* element, Row const& row) {
    if (row.contained() || row.kind == PropertyKind::ContainerEnd) return false;
    Body& writable = const_cast<Body&>(self);
    if (row.kind == PropertyKind::ManyReference)
        return static_cast<ReferenceCollection&>(collection(writable, row))
            .basicContainsProxyTo(ModelElement(element));
    if (row.kind != PropertyKind::Reference) return false;
    Body* stored = field<Body*>(self, row);
    if (stored == element) return true;
    if (stored == nullptr || !stored->valid() || !stored->isProxy() || self.model() == nullptr ||
        self.model()->peekResolveProxy(&self, stored) != element)
        return false;
    basicSetReference(writable, row, element);
    return true;
}

} // namespace brant::zero
