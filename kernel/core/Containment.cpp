// Who holds whom. Every change of a container goes through `contain`, `uncontain` and `relink`.

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/ReferenceSequence.hpp"

namespace brant::zero {

using schema::PropertyKind;

void Core::requireSameModel(Body const* self, Body const* target) {
    if (self == nullptr || target == nullptr || self->isProxy() || target->isProxy()) return;
    if (self->model() != target->model())
        reportException(brant0::messages::CannotCreateCrossModelAssociation());
}

void Core::requireAcyclic(Body const& self, Body const* newContainer) {
    if (&self == newContainer) reportException(brant0::messages::CircularContainment());
    // What never held anything cannot be above anything: a new child costs no walk, however deep its parent
    // lies.
    if ((self.state_ & Body::HasHeld) == 0) return;
    for (Body const* holder = newContainer; holder != nullptr; holder = holder->container_)
        if (holder == &self) reportException(brant0::messages::CircularContainment());
}

void Core::relink(Body& child, Body* container, Row const* row) {
    ModelImpl& model = *child.model();
    if (child.container_ == container && child.feature_ == row) return;
    recordLink(child);
    if (child.container_ == nullptr) model.leaveTopLevel(child);
    child.container_ = container;
    child.feature_ = row;
    if (container == nullptr)
        model.enterTopLevel(child);
    else
        container->state_ |= Body::HasHeld;
}

void Core::restoreLink(Body& child, Body* container, Row const* row, std::uint32_t order) noexcept {
    ModelImpl& model = *child.model();
    if (child.container_ == nullptr) model.leaveTopLevel(child);
    child.container_ = container;
    child.feature_ = row;
    child.order_ = order;
    if (container == nullptr && row == nullptr) model.enterTopLevelAt(child, order);
}

void Core::takeOut(Body& child) {
    Body* holder = child.container_;
    if (holder == nullptr) return;
    Row const& row = *child.feature_;
    switch (row.kind) {
    case PropertyKind::Reference:
        if (field<Body*>(*holder, row) == &child) {
            recordReference(*holder, row);
            basicSetReference(*holder, row, nullptr);
        }
        break;
    case PropertyKind::ManyReference: {
        ReferenceSequence& members = sequence(*holder, row);
        std::size_t const index = members.find(&child);
        if (index != ReferenceSequence::npos) members.recordedErase(index);
        break;
    }
    case PropertyKind::Map:
        field<ReferenceMap>(*holder, row).recordedErase(&child);
        break;
    default:
        break;
    }
}

void Core::putBack(Body& holder, Row const& row, Body& child) {
    switch (row.kind) {
    case PropertyKind::Reference:
        recordReference(holder, row);
        basicSetReference(holder, row, &child);
        break;
    case PropertyKind::ManyReference:
        sequence(holder, row).recordedInsert(sequence(holder, row).size(), &child);
        break;
    case PropertyKind::Map:
        field<ReferenceMap>(holder, row).recordedInsert(&child);
        break;
    default:
        break;
    }
}

void Core::contain(Body& owner, Row const& row, Body& child, std::size_t position) {
    requireAcyclic(child, &owner);
    takeOut(child);
    if (row.kind == PropertyKind::Reference) {
        Body* old = field<Body*>(owner, row);
        if (old != nullptr && old->valid() && old->container_ == &owner && old->feature_ == &row)
            relink(*old, nullptr, nullptr);
    }
    relink(child, &owner, &row);
    if (row.kind != PropertyKind::ManyReference)
        putBack(owner, row, child);
    else if (position == append)
        sequence(owner, row).appendHeld(owner, &child);
    else
        sequence(owner, row).recordedInsert(position, &child);
}

void Core::uncontain(Body& child) {
    takeOut(child);
    relink(child, nullptr, nullptr);
}

} // namespace brant::zero
