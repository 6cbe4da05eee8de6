// Bodies of Primitive.hpp, for the files that instantiate it.
#pragma once

#include "ModelImpl.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/Primitive.hpp"
#include "brant/zero/Standalone.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"
#include "brant/zero/meta/StandardTypes.hpp"

#include <algorithm>
#include <cstring>
#include <optional>
#include <type_traits>

namespace brant::zero {

namespace primitive {

/// \returns the meta type of `T`.
template <class T>
meta::Type const& typeOf() {
    if constexpr (value::Primitive<T>) {
        return meta::StandardTypes::of(value::kindOf<T>());
    } else {
        static meta::Type const type = [] {
            if constexpr (SchemaEnumeration<T>)
                return meta::requireType(EnumerationTraits<T>::table.qualifiedName);
            else
                return meta::requireType(T::table.qualifiedName);
        }();
        return type;
    }
}

/// A change in one step. It opens a level only where none is open: nothing can fail once the step is
/// recorded.
class SingleStep {
  public:
    explicit SingleStep(AbstractOwnedCollection const& collection) {
        ModelElementImpl const* const owner = collection.owner();
        if (owner != nullptr && owner->model() != nullptr && owner->model()->transactions().depth() == 0)
            level_.emplace(*owner);
        log_ = Core::logFor(collection);
    }
    /// Null when nothing is to be recorded.
    [[nodiscard]] UndoLog* log() const noexcept { return log_; }
    void commit() {
        if (level_) level_->commit();
    }

  private:
    std::optional<Core::Level> level_;
    UndoLog* log_;
};

// The payload of a recorded step about one value: the value itself where it fits, else one on the heap.

template <class T>
inline constexpr bool fitsPayload = std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof(std::uint64_t);

template <class T>
std::uint64_t pack(T&& value) {
    using Plain = std::remove_cvref_t<T>;
    if constexpr (fitsPayload<Plain>) {
        std::uint64_t payload = 0;
        std::memcpy(&payload, &value, sizeof value);
        return payload;
    } else {
        return asPayload(new Plain(std::forward<T>(value)));
    }
}

template <class T>
T unpack(UndoEntry const& entry) {
    if constexpr (fitsPayload<T>) {
        T value;
        std::memcpy(&value, &entry.payload, sizeof value);
        return value;
    } else {
        return *entry.pointer<T>();
    }
}

template <class T>
void dropPayload(UndoEntry const& entry) noexcept {
    if constexpr (!fitsPayload<T>) delete entry.pointer<T>();
}

/// \returns the value, moved out of the payload, which is gone afterwards.
template <class T>
T takePayload(UndoEntry const& entry) noexcept {
    if constexpr (fitsPayload<T>) {
        return unpack<T>(entry);
    } else {
        std::unique_ptr<T> const payload(entry.pointer<T>());
        return std::move(*payload);
    }
}

} // namespace primitive

// Sequences.

template <class T>
std::vector<T>& PrimitiveSequence<T>::values() {
    if (values_ == nullptr) values_ = std::make_unique<std::vector<T>>();
    return *values_;
}

template <class T>
std::size_t PrimitiveSequence<T>::find(T const& value) const noexcept {
    return static_cast<std::size_t>(std::find(begin(), end(), value) - begin());
}

template <class T>
bool PrimitiveSequence<T>::contains(T const& value) const {
    return find(value) < size();
}

template <class T>
void PrimitiveSequence<T>::push_back(T value) {
    insert(size(), std::move(value));
}

template <class T>
auto PrimitiveSequence<T>::insert(std::size_t position, T value) -> const_iterator {
    if (this->row().unique())
        if (std::size_t const present = find(value); present < size())
            return begin() + static_cast<difference_type>(present);
    primitive::SingleStep step(*this);
    values().insert(values().begin() + static_cast<difference_type>(position), std::move(value));
    if (step.log() != nullptr) step.log()->push(collectionEntry(*this, UndoOp::Insert, position));
    step.commit();
    return begin() + static_cast<difference_type>(position);
}

template <class T>
auto PrimitiveSequence<T>::erase(std::size_t index) -> const_iterator {
    primitive::SingleStep step(*this);
    auto const position = values_->begin() + static_cast<difference_type>(index);
    if (step.log() != nullptr)
        step.log()->push(collectionEntry(*this, UndoOp::Erase, index, primitive::pack(std::move(*position))));
    values_->erase(position);
    step.commit();
    return begin() + static_cast<difference_type>(index);
}

template <class T>
void PrimitiveSequence<T>::remove(T const& value) {
    if (std::size_t const index = find(value); index < size()) erase(index);
}

template <class T>
void PrimitiveSequence<T>::assign(std::size_t index, T value) {
    if (this->row().unique() && contains(value)) return;
    primitive::SingleStep step(*this);
    T& stored = (*values_)[index];
    if (step.log() != nullptr)
        step.log()->push(collectionEntry(*this, UndoOp::Store, index, primitive::pack(std::move(stored))));
    stored = std::move(value);
    step.commit();
}

template <class T>
void PrimitiveSequence<T>::replaceContents(std::unique_ptr<std::vector<T>> contents) {
    primitive::SingleStep step(*this);
    if (step.log() != nullptr)
        step.log()->push(collectionEntry(*this, UndoOp::Contents, 0, asPayload(values_.release())));
    values_ = std::move(contents);
    step.commit();
}

template <class T>
void PrimitiveSequence<T>::clear() {
    replaceContents(nullptr);
}

template <class T>
void PrimitiveSequence<T>::reserve(std::size_t count) {
    values().reserve(count);
}

template <class T>
meta::Type PrimitiveSequence<T>::getCollectionType() const {
    return primitive::typeOf<T>();
}

template <class T>
void PrimitiveSequence<T>::copyContents(AbstractOwnedCollection const& other) {
    auto const& source = static_cast<PrimitiveSequence const&>(other);
    replaceContents(source.empty() ? nullptr : std::make_unique<std::vector<T>>(*source.values_));
}

template <class T>
std::vector<Value> PrimitiveSequence<T>::getAllValues() const {
    std::vector<Value> result;
    result.reserve(size());
    for (T const& value : *this)
        result.push_back(Value::own<T>(primitive::typeOf<T>(), ValueFlags::One, value));
    return result;
}

template <class T>
void PrimitiveSequence<T>::genericAdd(Value const& value) {
    push_back(value.getValue<T>());
}

template <class T>
void PrimitiveSequence<T>::genericRemove(Value const& value) {
    remove(value.getValue<T>());
}

template <class T>
Value PrimitiveSequence<T>::genericAt(unsigned long index) const {
    return Value::own<T>(primitive::typeOf<T>(), ValueFlags::One, (*this)[index]);
}

template <class T>
void PrimitiveSequence<T>::genericInsert(Value const& value, unsigned long index) {
    insert(index, value.getValue<T>());
}

template <class T>
void PrimitiveSequence<T>::genericReplace(Value const& value, unsigned long index) {
    assign(index, value.getValue<T>());
}

template <class T>
void PrimitiveSequence<T>::genericRemoveAt(unsigned long index) {
    erase(index);
}

template <class T>
std::uint32_t PrimitiveSequence<T>::genericIndexOf(Value const& value) const {
    std::size_t const index = find(value.getValue<T>());
    return index < size() ? static_cast<std::uint32_t>(index) : ~std::uint32_t{0};
}

template <class T>
void PrimitiveSequence<T>::undo(UndoEntry& entry) noexcept {
    auto const position = static_cast<difference_type>(entry.position);
    switch (entry.op) {
    case UndoOp::Insert:
        values_->erase(values_->begin() + position);
        break;
    case UndoOp::Erase: // the room is still there
        values_->insert(values_->begin() + position, primitive::takePayload<T>(entry));
        break;
    case UndoOp::Store:
        (*values_)[entry.position] = primitive::takePayload<T>(entry);
        break;
    case UndoOp::Contents:
        values_.reset(entry.pointer<std::vector<T>>());
        break;
    default:
        break;
    }
}

template <class T>
void PrimitiveSequence<T>::discard(UndoEntry& entry) noexcept {
    if (entry.op == UndoOp::Erase || entry.op == UndoOp::Store)
        primitive::dropPayload<T>(entry);
    else if (entry.op == UndoOp::Contents)
        delete entry.pointer<std::vector<T>>();
}

template <class T>
std::unique_ptr<AbstractOwnedCollection> PrimitiveSequence<T>::snapshot() const {
    auto copy = std::make_unique<Standalone<PrimitiveSequence>>(nullptr, this->row());
    if (!empty()) copy->values() = *values_;
    return copy;
}

template <class T>
void PrimitiveSequence<T>::applyInverse(UndoEntry const& entry) {
    auto const position = static_cast<difference_type>(entry.position);
    switch (entry.op) {
    case UndoOp::Insert:
        values().erase(values().begin() + position);
        break;
    case UndoOp::Erase:
        values().insert(values().begin() + position, primitive::unpack<T>(entry));
        break;
    case UndoOp::Store:
        values()[entry.position] = primitive::unpack<T>(entry);
        break;
    case UndoOp::Contents: {
        auto const* const old = entry.pointer<std::vector<T>>();
        values_ = old == nullptr ? nullptr : std::make_unique<std::vector<T>>(*old);
        break;
    }
    default:
        break;
    }
}

// Sets. The payload of each recorded step is a set with the values that came or went.

template <class T>
std::set<T> const& PrimitiveSet<T>::values() const noexcept {
    static std::set<T> const none;
    return values_ == nullptr ? none : *values_;
}

template <class T>
void PrimitiveSet<T>::add(T value) {
    primitive::SingleStep step(*this);
    if (contains(value)) {
        this->modifying();
    } else {
        if (values_ == nullptr) values_ = std::make_unique<std::set<T>>();
        auto added = std::make_unique<std::set<T>>();
        added->insert(value);
        values_->insert(std::move(value));
        if (step.log() != nullptr)
            step.log()->push(collectionEntry(*this, UndoOp::Insert, 0, asPayload(added.release())));
    }
    step.commit();
}

template <class T>
void PrimitiveSet<T>::erase(T const& value) {
    primitive::SingleStep step(*this);
    if (!contains(value)) {
        this->modifying();
    } else {
        auto erased = std::make_unique<std::set<T>>();
        erased->insert(values_->extract(value));
        if (step.log() != nullptr)
            step.log()->push(collectionEntry(*this, UndoOp::Erase, 0, asPayload(erased.release())));
    }
    step.commit();
}

template <class T>
void PrimitiveSet<T>::replaceContents(std::unique_ptr<std::set<T>> contents) {
    primitive::SingleStep step(*this);
    if (step.log() != nullptr)
        step.log()->push(collectionEntry(*this, UndoOp::Contents, 0, asPayload(values_.release())));
    values_ = std::move(contents);
    step.commit();
}

template <class T>
void PrimitiveSet<T>::clear() {
    replaceContents(nullptr);
}

template <class T>
meta::Type PrimitiveSet<T>::getCollectionType() const {
    return primitive::typeOf<T>();
}

template <class T>
void PrimitiveSet<T>::copyContents(AbstractOwnedCollection const& other) {
    auto const& source = static_cast<PrimitiveSet const&>(other);
    replaceContents(source.empty() ? nullptr : std::make_unique<std::set<T>>(*source.values_));
}

template <class T>
std::vector<Value> PrimitiveSet<T>::getAllValues() const {
    std::vector<Value> result;
    result.reserve(size());
    for (T const& value : values())
        result.push_back(Value::own<T>(primitive::typeOf<T>(), ValueFlags::One, value));
    return result;
}

template <class T>
void PrimitiveSet<T>::genericAdd(Value const& value) {
    add(value.getValue<T>());
}

template <class T>
void PrimitiveSet<T>::genericRemove(Value const& value) {
    erase(value.getValue<T>());
}

template <class T>
void PrimitiveSet<T>::undo(UndoEntry& entry) noexcept {
    std::unique_ptr<std::set<T>> payload(entry.pointer<std::set<T>>());
    if (entry.op == UndoOp::Insert)
        for (T const& value : *payload)
            values_->erase(value);
    else if (entry.op == UndoOp::Erase)
        values_->merge(*payload);
    else if (entry.op == UndoOp::Contents)
        values_ = std::move(payload);
}

template <class T>
void PrimitiveSet<T>::discard(UndoEntry& entry) noexcept {
    delete entry.pointer<std::set<T>>();
}

template <class T>
std::unique_ptr<AbstractOwnedCollection> PrimitiveSet<T>::snapshot() const {
    auto copy = std::make_unique<Standalone<PrimitiveSet>>(nullptr, this->row());
    if (!empty()) copy->values_ = std::make_unique<std::set<T>>(*values_);
    return copy;
}

template <class T>
void PrimitiveSet<T>::applyInverse(UndoEntry const& entry) {
    auto const* const payload = entry.pointer<std::set<T>>();
    if (values_ == nullptr) values_ = std::make_unique<std::set<T>>();
    if (entry.op == UndoOp::Insert)
        for (T const& value : *payload)
            values_->erase(value);
    else if (entry.op == UndoOp::Erase)
        values_->insert(payload->begin(), payload->end());
    else if (entry.op == UndoOp::Contents)
        values_ = payload == nullptr ? nullptr : std::make_unique<std::set<T>>(*payload);
}

} // namespace brant::zero
