#include "brant/zero/Storage.hpp"

#include "UndoLog.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/Reflection.hpp"
#include "brant/zero/meta/Property.hpp"

#include <algorithm>

namespace brant::zero {

using schema::PropertyKind;
using schema::PropertyRow;

Changes::Changes(boost::uuids::uuid const& uuid, Model model, meta::Class metaClass, unsigned long count)
    : uuid_(uuid), model_(std::move(model)), metaClass_(std::move(metaClass)), count_(count),
      bits_(count + 1) {}
Changes::~Changes() = default;

void Changes::mark(unsigned long index) {
    if (index >= bits_.size()) bits_.resize(index + 1);
    bits_.set(index);
}

void Changes::clear(unsigned long index) {
    if (index < bits_.size()) bits_.reset(index);
}

Storage::~Storage() = default;

Storage::Old* Storage::find(PropertyRow const& row) const noexcept {
    auto const found =
        std::find_if(old_.begin(), old_.end(), [&](Old const& old) { return old.row == &row; });
    return found == old_.end() ? nullptr : &*found;
}

Storage::Old& Storage::slot(PropertyRow const& row) const {
    if (Old* found = find(row)) return *found;
    Old& added = old_.emplace_back();
    added.row = &row;
    return added;
}

void Storage::setOldContainer(ModelElement const& container, meta::Property const& feature) {
    containerTouched_ = true;
    oldContainer_ = container;
    oldFeature_ = feature ? &Core::rowOf(feature) : nullptr;
}

void Storage::build(Old& old) const {
    if (old.collection != nullptr || old.live == nullptr) return;
    old.collection = Core::snapshotOf(*old.live);
    for (auto step = old.steps.rbegin(); step != old.steps.rend(); ++step)
        Core::applyInverse(*old.collection, (*log_)[*step]);
    old.live = nullptr;
    old.steps.clear();
}

void Storage::buildAll() const {
    for (Old& old : old_)
        build(old);
}

void Storage::close() noexcept {
    for (Old& old : old_) {
        old.lost = old.lost || old.live != nullptr;
        old.live = nullptr;
        old.steps.clear();
    }
    log_.reset();
}

void Storage::copyFrom(ModelElementImpl const& element, PropertyRow const& row) {
    switch (row.kind) {
    case PropertyKind::ContainerEnd:
        setOldContainer(element.container(), element.containmentFeature());
        break;
    case PropertyKind::Attribute:
        if (row.valueKind == schema::ValueKind::StdString)
            slot(row).value = Core::field<std::string>(element, row);
        else if (row.valueKind == schema::ValueKind::String)
            slot(row).value = Core::field<std::u16string>(element, row);
        else
            slot(row).value = Core::readBits(element, row);
        break;
    case PropertyKind::Reference:
        slot(row).value = ModelElement(Core::field<ModelElementImpl*>(element, row));
        break;
    case PropertyKind::ManyAttribute:
    case PropertyKind::ManyReference:
    case PropertyKind::Map:
        // An empty collection needs no copy: no snapshot means "was empty".
        if (!Core::collection(element, row).empty())
            slot(row).collection = Core::snapshotOf(Core::collection(element, row));
        break;
    default:
        break;
    }
}

void Storage::restoreTo(ModelElementImpl& element, PropertyRow const& row) const {
    Old* old = find(row);
    switch (row.kind) {
    case PropertyKind::Attribute:
        if (old == nullptr) break;
        if (auto const* bits = std::get_if<std::uint64_t>(&old->value))
            Core::restoreBits(element, row, *bits);
        else if (auto const* text = std::get_if<std::string>(&old->value))
            Core::field<std::string>(element, row) = *text;
        else if (auto const* wide = std::get_if<std::u16string>(&old->value))
            Core::field<std::u16string>(element, row) = *wide;
        break;
    case PropertyKind::Reference:
        Core::basicSetReference(element, row,
                                old == nullptr ? nullptr : std::get<ModelElement>(old->value).get());
        break;
    case PropertyKind::ManyAttribute:
    case PropertyKind::ManyReference:
    case PropertyKind::Map: {
        AbstractOwnedCollection& live = Core::collection(element, row);
        if (old != nullptr) build(*old);
        if (old != nullptr && old->collection != nullptr)
            live.copyContents(*old->collection);
        else
            Core::dropContents(live);
        break;
    }
    default:
        break;
    }
}

bool Storage::isUnchanged(ModelElementImpl const& element, Old& old) const {
    PropertyRow const& row = *old.row;
    switch (row.kind) {
    case PropertyKind::Attribute:
        if (auto const* text = std::get_if<std::string>(&old.value))
            return *text == Core::field<std::string>(element, row);
        if (auto const* wide = std::get_if<std::u16string>(&old.value))
            return *wide == Core::field<std::u16string>(element, row);
        return std::get<std::uint64_t>(old.value) == Core::readBits(element, row);
    case PropertyKind::Reference:
        return std::get<ModelElement>(old.value).get() == Core::field<ModelElementImpl*>(element, row);
    default:
        break;
    }
    AbstractOwnedCollection const& live = Core::collection(element, row);
    std::size_t const size = live.empty() ? 0 : Core::sizeUpToTwo(live);
    if (size > 1) return false;
    build(old); // cheap: the live side holds one element at most
    bool const wasEmpty = old.collection == nullptr || old.collection->empty();
    if (wasEmpty || size == 0) return wasEmpty && size == 0;
    if (row.kind == PropertyKind::ManyAttribute) return false;
    auto const contents = [](AbstractOwnedCollection const& collection) {
        return static_cast<ReferenceCollection const&>(collection).getAllValuesAndProxies();
    };
    return contents(*old.collection) == contents(live);
}

void Storage::revertUnchanged(ModelElementImpl* element) {
    for (Old& old : old_)
        if (changed(old.row->index) && isUnchanged(*element, old)) clear(old.row->index);
    if (!containerTouched_) return;
    ModelElementImpl const* const before = oldContainer_.get();
    ModelElementImpl const* const now = element->containerBody();
    if (before == now && oldFeature_ == element->containmentRow()) clear(0);
    // An end that was passed through on the way is as it was, too.
    schema::ClassTable const& table = element->classTable();
    for (std::size_t i = 1; i < table.count; ++i) {
        PropertyRow const& row = *table.stored[i];
        if (row.kind == PropertyKind::ContainerEnd &&
            (oldFeature_ == row.opposite ? before : nullptr) ==
                (element->containmentRow() == row.opposite ? now : nullptr))
            clear(i);
    }
}

Value Storage::getOldValue(meta::Property const& property, ReflectionPrivateTag const&) const {
    PropertyRow const& row = Core::rowOf(property);
    if (!row.stored() || !changed(row.index)) return Value();
    if (row.kind == PropertyKind::ContainerEnd) {
        bool const held = oldFeature_ != nullptr && oldFeature_ == row.opposite;
        return elementValue(property, held ? oldContainer_ : ModelElement());
    }
    if (row.kind == PropertyKind::Attribute) {
        Old const* old = find(row);
        return old == nullptr
                   ? Value()
                   : std::visit([&](auto const& v) { return oldAttribute(property, row, v); }, old->value);
    }
    if (row.kind == PropertyKind::Reference) {
        Old const* old = find(row);
        ModelElement const* target = old == nullptr ? nullptr : std::get_if<ModelElement>(&old->value);
        return elementValue(property, target != nullptr && *target ? *target : ModelElement());
    }
    Old& old = slot(row);
    if (old.lost) return Value();
    build(old);
    if (old.collection == nullptr) old.collection = emptyCollection(property);
    return Value::refer(property, *old.collection);
}

} // namespace brant::zero
