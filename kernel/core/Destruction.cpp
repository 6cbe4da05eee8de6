// The end of elements: destruction with all contents, and the release of everything when a model dies.

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/ReferenceSequence.hpp"

#include <vector>

namespace brant::zero {

using schema::ClassTable;
using schema::PropertyKind;
using schema::PropertyRow;

namespace {

/// The rows that destruction walks: of the class itself first, then of its superclasses; singles before
/// collections.
template <class F>
void forEachOwningRow(ClassTable const& table, F visit) {
    for (ClassTable const* cls = &table; cls != nullptr; cls = cls->base) {
        for (bool single : {true, false})
            for (std::uint16_t i = 0; i < cls->rowCount; ++i) {
                PropertyRow const& row = cls->rows[i];
                if (row.owning() && (row.kind == PropertyKind::Reference) == single) visit(row);
            }
    }
}

/// An element on its way out and the owned elements that still have to go before it.
struct Frame {
    ModelElementImpl* element;
    std::vector<ModelElementImpl*> owned;
    std::size_t next = 0;
};

} // namespace

void Core::disassociate(Body& element) {
    for (std::size_t i = 1; i < element.classTable().count; ++i) {
        Row const& row = *element.classTable().stored[i];
        if (!row.refersToElements() || row.contained() || row.kind == PropertyKind::ContainerEnd) continue;
        if (row.kind == PropertyKind::Reference) {
            if (field<Body*>(element, row) != nullptr) replaceField(element, row, nullptr);
        } else if (ReferenceSequence& members = sequence(element, row); !members.empty()) {
            members.basicClear();
        }
    }
}

void Core::dropLinks(Body& element) noexcept {
    ClassTable const& table = element.classTable();
    for (std::size_t i = 1; i < table.count; ++i) {
        Row const& row = *table.stored[i];
        switch (row.kind) {
        case PropertyKind::Reference:
            if (field<Body*>(element, row) != nullptr) basicSetReference(element, row, nullptr);
            break;
        case PropertyKind::ManyReference:
        case PropertyKind::Map:
            collection(element, row).dropContents();
            break;
        default:
            break;
        }
    }
}

namespace {

std::vector<ModelElementImpl*> ownedBy(ModelElementImpl& element) {
    std::vector<ModelElementImpl*> owned;
    auto take = [&](ModelElementImpl* child, PropertyRow const& row) {
        // A placeholder stands for what lives elsewhere; a repeated, left-over or dead entry is nobody's
        // child here.
        if (child != nullptr && child->valid() && !child->isProxy() && child->containerBody() == &element &&
            child->containmentRow() == &row)
            owned.push_back(child);
    };
    forEachOwningRow(element.classTable(), [&](PropertyRow const& row) {
        if (row.kind == PropertyKind::Reference) {
            take(Core::field<ModelElementImpl*>(element, row), row);
        } else if (row.kind == PropertyKind::ManyReference) {
            ReferenceSequence const& members = Core::sequence(element, row);
            for (std::size_t i = 0; i < members.size(); ++i)
                take(members.slot(i), row);
        } else if (row.kind == PropertyKind::Map) {
            for (auto const& [key, child] : Core::field<ReferenceMap>(element, row).entries())
                take(child.get(), row);
        }
    });
    return owned;
}

void dropOwned(ModelElementImpl& element) {
    forEachOwningRow(element.classTable(), [&](PropertyRow const& row) {
        if (row.kind != PropertyKind::Reference) {
            auto& members = static_cast<ReferenceCollection&>(Core::collection(element, row));
            if (!members.empty()) element._basicClear(&members);
        } else if (Core::field<ModelElementImpl*>(element, row) != nullptr) {
            Core::recordReference(element, row);
            Core::basicSetReference(element, row, nullptr);
        }
    });
}

} // namespace

void Core::finishDestruction(Body& element) {
    ModelImpl& model = *element.model();
    recordLink(element);
    element.container_ = nullptr;
    element.feature_ = nullptr;
    if (records(element)) {
        UndoEntry entry{};
        entry.element = &element;
        entry.op = UndoOp::Destroyed;
        model.transactions().log().push(entry);
        element.addRef();
    } else {
        model.transactions().dropCreated(element);
    }
    element.valid_ = false;
    element.liveness_ = Liveness::Destroyed;
    model.leave(element);
}

void Core::destroyTree(Body& root) {
    // A work list instead of recursion: containment may be a million levels deep.
    std::vector<Frame> frames;
    auto enter = [&frames](Body& element) {
        element.notifyDestroying();
        element.aboutToDestroy();
        disassociate(element);
        frames.push_back({&element, ownedBy(element)});
    };
    enter(root);
    while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.next < frame.owned.size()) {
            Body& child = *frame.owned[frame.next++];
            if (child.valid_) enter(child);
            continue;
        }
        ModelElement const keep(frame.element);
        dropOwned(*frame.element);
        frames.pop_back();
        finishDestruction(*keep.get());
    }
}

void Core::destroy(Body& element) {
    if (!element.valid_) return;
    requireWritable(element);
    ModelElement const keep(&element);
    Level level(element);
    element.makeUncontained();
    element.model()->leaveTopLevel(element);
    destroyTree(element);
    level.commit();
}

void Core::destroyContents(Body& element) {
    for (Body* child : ownedBy(element)) {
        ModelElement const keep(child);
        if (child->valid_) destroyTree(*child);
    }
    dropOwned(element);
}

} // namespace brant::zero
