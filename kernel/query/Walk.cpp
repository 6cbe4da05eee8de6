#include "brant/zero/query/Walk.hpp"

#include "brant/zero/Core.hpp"
#include "brant/zero/Map.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <unordered_set>

namespace brant::zero::query {

using schema::ClassTable;
using schema::PropertyKind;
using schema::PropertyRow;

WalkPlan const& WalkPlan::of(ClassTable const& wanted) {
    static std::mutex mutex;
    static std::map<ClassTable const*, std::unique_ptr<WalkPlan const>> plans;
    std::lock_guard const lock(mutex);
    std::unique_ptr<WalkPlan const>& plan = plans[&wanted];
    if (plan == nullptr) plan = std::make_unique<WalkPlan const>(wanted);
    return *plan;
}

namespace {

using Classes = std::vector<ClassTable const*>;

/// \returns whether an element in that property can be, or contain, one of the useful classes.
bool leadsTo(PropertyRow const& row, Classes const& useful) {
    return row.owning() && std::ranges::any_of(useful, [&](ClassTable const* table) {
               return table->conformsTo(*row.target);
           });
}

bool hasWayTo(ClassTable const& table, Classes const& useful) {
    for (std::size_t i = 1; i < table.count; ++i)
        if (leadsTo(*table.stored[i], useful)) return true;
    return false;
}

/// \returns the wanted classes and all that can contain one, at any depth.
Classes usefulClasses(ClassTable const& wanted) {
    Classes useful;
    Classes rest;
    for (ClassTable const* table : meta::MetaRegistry::getInstance().modelClasses())
        (table->conformsTo(wanted) ? useful : rest).push_back(table);
    for (std::size_t before = 0; before != useful.size();) {
        before = useful.size();
        std::erase_if(rest, [&](ClassTable const* table) {
            bool const way = hasWayTo(*table, useful);
            if (way) useful.push_back(table);
            return way;
        });
    }
    return useful;
}

} // namespace

WalkPlan::WalkPlan(ClassTable const& wanted) {
    wanted.metaClass(); // its package registers its classes
    Classes const useful = usefulClasses(wanted);
    std::size_t capacity = 16;
    while (capacity < 4 * useful.size())
        capacity *= 2;
    entries_.resize(capacity);
    mask_ = capacity - 1;
    for (ClassTable const* table : useful) {
        Entry entry{table, table->conformsTo(wanted), {}};
        for (std::size_t i = 1; i < table->count; ++i)
            if (leadsTo(*table->stored[i], useful)) entry.rows.push_back(table->stored[i]);
        insert(std::move(entry));
    }
}

void WalkPlan::insert(Entry entry) {
    std::size_t i = hash(*entry.table);
    while (entries_[i & mask_].table != nullptr)
        ++i;
    entries_[i & mask_] = std::move(entry);
}

namespace {

/// Elements lie all over memory: one is asked for before it is its turn, the two lines that a walk reads of
/// it.
constexpr std::ptrdiff_t ahead = 4;
void fetch(ModelElementImpl const* element) noexcept {
    __builtin_prefetch(element);
    __builtin_prefetch(reinterpret_cast<char const*>(element) + 64);
}

} // namespace

Walk::Walk(WalkPlan const& plan, ModelElementImpl const& root) : plan_(&plan) {
    if (WalkPlan::Entry const* entry = plan.find(root.classTable())) enter(root, *entry);
}

Walk::Walk(WalkPlan const& plan, Model const& model) : plan_(&plan) {
    std::vector<ModelElementImpl*> members;
    for (ModelElement const& element : model.getTopLevelElements())
        members.push_back(element.get());
    gather(frames_.emplace_back(Frame{nullptr, nullptr, nullptr, nullptr, nullptr, nullptr}), members);
}

ModelElementImpl* Walk::next() {
    while (!frames_.empty()) {
        Frame& frame = frames_.back();
        if (frame.slot == frame.lastSlot) {
            if (frame.row == frame.lastRow)
                frames_.pop_back();
            else
                open(frame, **frame.row++);
            continue;
        }
        if (frame.lastSlot - frame.slot > ahead) fetch(frame.slot[ahead]);
        ModelElementImpl* const element = *frame.slot++;
        if (element == nullptr || !element->valid() || element->isProxy()) continue;
        WalkPlan::Entry const* const entry = plan_->find(element->classTable());
        if (entry == nullptr) continue;
        // What was moved elsewhere may have left an entry behind; it is met where it is contained.
        if (element->containerBody() != frame.owner ||
            (frame.owner != nullptr && element->containmentRow() != frame.row[-1]))
            continue;
        if (!entry->rows.empty()) enter(*element, *entry);
        if (entry->wanted) return element;
    }
    return nullptr;
}

void Walk::enter(ModelElementImpl const& owner, WalkPlan::Entry const& entry) {
    PropertyRow const* const* const rows = entry.rows.data();
    frames_.push_back(Frame{&owner, rows, rows + entry.rows.size(), nullptr, nullptr, nullptr});
}

void Walk::open(Frame& frame, PropertyRow const& row) {
    ModelElementImpl const& owner = *frame.owner;
    if (row.kind == PropertyKind::Reference) {
        frame.slot = &Core::field<ModelElementImpl*>(owner, row);
        frame.lastSlot = frame.slot + 1;
        return;
    }
    if (row.kind == PropertyKind::ManyReference) {
        ReferenceSequence const& sequence = Core::sequence(owner, row);
        if (sequence.empty() || sequence.orderedByKey()) {
            frame.slot = sequence.slots();
            frame.lastSlot = frame.slot + sequence.size();
            return;
        }
        std::vector<ModelElementImpl*> members;
        std::unordered_set<ModelElementImpl const*> seen;
        for (std::size_t i = 0; i < sequence.size(); ++i) {
            ModelElementImpl* const element = sequence.resolved(i);
            if (seen.insert(element).second) members.push_back(element);
        }
        return gather(frame, members);
    }
    std::vector<ModelElementImpl*> members;
    for (auto const& [key, element] : Core::field<ReferenceMap>(owner, row).entries())
        members.push_back(element.get());
    gather(frame, members);
}

void Walk::gather(Frame& frame, std::vector<ModelElementImpl*> const& members) {
    frame.gathered = std::make_unique<ModelElementImpl*[]>(members.size());
    std::ranges::copy(members, frame.gathered.get());
    frame.slot = frame.gathered.get();
    frame.lastSlot = frame.slot + members.size();
}

} // namespace brant::zero::query
