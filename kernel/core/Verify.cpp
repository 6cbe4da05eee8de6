// The whole-graph check: everything that the write path promises, looked at from outside of it.

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/ReferenceSequence.hpp"

#include <algorithm>
#include <unordered_set>

namespace brant::zero {

using schema::PropertyKind;
using schema::PropertyRow;

namespace {

class Verifier {
  public:
    explicit Verifier(ModelImpl& model) : model_(model) {}

    std::optional<Violation> run() {
        checkRegistry();
        checkTopLevel();
        for (ModelElementImpl* element : model_.elements()) {
            if (found_) break;
            checkContainer(*element);
            checkProperties(*element);
        }
        if (!found_) checkForest();
        return std::move(found_);
    }

  private:
    void report(char const* rule, ModelElementImpl& element, PropertyRow const* row, std::string detail) {
        if (!found_)
            found_ = Violation{rule, ModelElement(&element),
                               row == nullptr ? "" : std::string(row->owner->qualifiedName) + "." + row->name,
                               std::move(detail)};
    }

    void checkRegistry() {
        std::unordered_set<boost::uuids::uuid, services::hashers::Brant0Hasher<boost::uuids::uuid>> seen;
        seen.reserve(model_.elements().size());
        for (std::size_t i = 0; i < model_.elements().size(); ++i) {
            ModelElementImpl& element = *model_.elements()[i];
            if (!element.valid()) report("identity", element, nullptr, "a dead element is registered");
            if (Core::registrySlot(element) != i)
                report("identity", element, nullptr, "the element does not know its place in the registry");
            if (!seen.insert(element.uuid()).second)
                report("identity", element, nullptr,
                       "two elements have the identity " + element.identifier());
            if (model_.identities().built() && model_.identities().find(element.uuid()) != &element)
                report("identity", element, nullptr,
                       "the identity index does not find " + element.identifier());
        }
    }

    void checkTopLevel() {
        auto const& slots = model_.topLevelSlots();
        for (std::size_t i = 0; i < slots.size(); ++i) {
            ModelElementImpl* element = slots[i];
            if (element != nullptr && (element->containerBody() != nullptr || Core::order(*element) != i))
                report("top-level", *element, nullptr, "a contained element stands in the top-level list");
        }
    }

    void checkContainer(ModelElementImpl& element) {
        ModelElementImpl* holder = element.containerBody();
        if (holder == nullptr) {
            auto const& slots = model_.topLevelSlots();
            std::uint32_t const slot = Core::order(element);
            if (slot >= slots.size() || slots[slot] != &element)
                report("top-level", element, nullptr,
                       "an element without container is missing from the top-level list");
            return;
        }
        PropertyRow const& row = *element.containmentRow();
        if (!holder->valid() || holder->model() != &model_)
            report("containment", element, &row, "the container is dead or of another model");
        else if (!holder->classTable().conformsTo(*row.owner) || !row.owning())
            report("containment", element, &row, "the container has no such containment");
        else if (!holds(*holder, row, element))
            report("containment", element, &row, "the container does not hold the element");
    }

    /// By the content, not by order keys: those are what is checked.
    static bool holds(ModelElementImpl& holder, PropertyRow const& row, ModelElementImpl const& element) {
        if (row.kind == PropertyKind::Reference)
            return Core::field<ModelElementImpl*>(holder, row) == &element;
        if (row.kind == PropertyKind::Map)
            return Core::field<ReferenceMap>(holder, row)
                .genericContains(ModelElement(const_cast<ModelElementImpl*>(&element)));
        return Core::sequence(holder, row).findForVerify(&element);
    }

    void checkProperties(ModelElementImpl& element) {
        schema::ClassTable const& table = element.classTable();
        for (std::size_t i = 1; i < table.count && !found_; ++i) {
            PropertyRow const& row = *table.stored[i];
            switch (row.kind) {
            case PropertyKind::Reference:
                checkTarget(element, row, Core::field<ModelElementImpl*>(element, row));
                break;
            case PropertyKind::ManyReference:
                checkSequence(element, row);
                break;
            case PropertyKind::Map:
                checkMap(element, row);
                break;
            default:
                break;
            }
        }
    }

    void checkTarget(ModelElementImpl& element, PropertyRow const& row, ModelElementImpl* target) {
        if (target == nullptr || !target->valid() || target->isProxy()) return;
        if (target->model() != &model_)
            report("containment", element, &row, "the target lies in another model");
        else if (!target->classTable().conformsTo(*row.target))
            report("containment", element, &row, "the target is of a wrong class");
        else if (row.owning() && row.kind == PropertyKind::Reference &&
                 (target->containerBody() != &element || target->containmentRow() != &row))
            report("opposite", element, &row, "what the property owns has another container");
    }

    void checkSequence(ModelElementImpl& element, PropertyRow const& row) {
        ReferenceSequence const& members = Core::sequence(element, row);
        std::unordered_set<ModelElementImpl*> seen;
        std::uint64_t last = 0;
        for (std::size_t i = 0; i < members.size(); ++i) {
            ModelElementImpl* target = members.slot(i);
            checkTarget(element, row, target);
            if (!row.owning() || !target->valid() || target->isProxy()) continue;
            bool const held = target->containerBody() == &element && target->containmentRow() == &row;
            // In a collection that may repeat an element, an entry may outlive the containment.
            if (!held && row.unique()) report("opposite", element, &row, "a member has another container");
            if (row.unique() && !seen.insert(target).second)
                report("opposite", element, &row, "a member stands twice in a unique collection");
            if (held && members.orderedByKey()) {
                if (i > 0 && Core::order(*target) <= last)
                    report("key", element, &row, "the order keys of the members are out of order");
                last = Core::order(*target);
            }
        }
    }

    void checkMap(ModelElementImpl& element, PropertyRow const& row) {
        for (auto const& [key, member] : Core::field<ReferenceMap>(element, row).entries()) {
            ModelElementImpl* target = member.get();
            checkTarget(element, row, target);
            if (!target->valid()) continue;
            if (target->containerBody() != &element || target->containmentRow() != &row)
                report("opposite", element, &row, "a member has another container");
            if (Core::field<std::u16string>(*target, *row.related) != key)
                report("key", element, &row, "a member stands under another key than its own");
        }
    }

    void checkForest() {
        // Every chain of containers must end; a chain that was followed once need not be followed again.
        std::unordered_set<ModelElementImpl const*> grounded;
        std::vector<ModelElementImpl const*> path;
        for (ModelElementImpl* element : model_.elements()) {
            path.clear();
            std::unordered_set<ModelElementImpl const*> here;
            for (ModelElementImpl const* at = element; at != nullptr && !grounded.contains(at);
                 at = at->containerBody()) {
                if (!here.insert(at).second) {
                    report("containment", *element, nullptr, "the element lies inside itself");
                    return;
                }
                path.push_back(at);
            }
            grounded.insert(path.begin(), path.end());
        }
    }

    ModelImpl& model_;
    std::optional<Violation> found_;
};

} // namespace

std::optional<Violation> Model::verify() const {
    if (impl_ == nullptr || !impl_->valid())
        throw DeadHandle(impl_ == nullptr ? HandleState::Null : HandleState::ModelGone);
    return Verifier(*impl_).run();
}

} // namespace brant::zero
