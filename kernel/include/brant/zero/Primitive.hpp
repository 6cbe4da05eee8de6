/// \file
/// Collections of plain values: texts, numbers, enumerations, datatypes.
///
/// The bodies are in the library, one instance per type of value; a type of value needs `==`, and `<` for a
/// set.
#pragma once

#include "brant/zero/Collection.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace brant::zero {

class GenericPrimitiveSequenceInterface;

/// A collection of values without other end and without placeholders. Where it has positions, it is its own
/// reflective face.
class ZELKOR_API AbstractPrimitiveCollection : public AbstractOwnedCollection {
  public:
    enum class Kind : int { Set, Sequence };

    /// Counts as a change of the property also when there was nothing to take out.
    virtual void clear() = 0;
    [[nodiscard]] virtual std::size_t size() const noexcept = 0;
    [[nodiscard]] virtual std::vector<Value> getAllValues() const = 0;
    /// \throws CannotCastIncompatibleTypes, before any change, unless the value is of the collection's type.
    virtual void genericAdd(Value const& value) = 0;
    /// Takes out the first equal member, if there is one. \throws CannotCastIncompatibleTypes.
    virtual void genericRemove(Value const& value) = 0;
    /// \returns the positional face, null for a collection without positions.
    [[nodiscard]] virtual GenericPrimitiveSequenceInterface* getGenericInterface() noexcept {
        return nullptr;
    }
    [[nodiscard]] virtual GenericPrimitiveSequenceInterface const* getGenericInterface() const noexcept {
        return nullptr;
    }
    [[nodiscard]] virtual Kind getKind() const noexcept = 0;

  protected:
    AbstractPrimitiveCollection() noexcept = default;
};

using GenericPrimitiveInterface = AbstractPrimitiveCollection;

/// The positional half of the reflective face. Positions are not checked.
class ZELKOR_API GenericPrimitiveSequenceInterface : public AbstractPrimitiveCollection {
  public:
    /// \requires index < size().
    [[nodiscard]] virtual Value genericAt(unsigned long index) const = 0;
    virtual void genericInsert(Value const& value, unsigned long index) = 0;
    /// In a unique collection a value that is a member already changes nothing.
    virtual void genericReplace(Value const& value, unsigned long index) = 0;
    virtual void genericRemoveAt(unsigned long index) = 0;
    /// \returns the first position of an equal member, or all ones.
    [[nodiscard]] virtual std::uint32_t genericIndexOf(Value const& value) const = 0;

    [[nodiscard]] GenericPrimitiveSequenceInterface* getGenericInterface() noexcept final { return this; }
    [[nodiscard]] GenericPrimitiveSequenceInterface const* getGenericInterface() const noexcept final {
        return this;
    }
    [[nodiscard]] Kind getKind() const noexcept final { return Kind::Sequence; }
};

/// An ordered collection of values, a contiguous range. Two words when empty. A unique one takes each value
/// once and searches linearly for that. Each change is one transaction level; any change invalidates
/// iterators and references.
template <class T>
class ZELKOR_API PrimitiveSequence : public GenericPrimitiveSequenceInterface {
  public:
    using value_type = T;
    using reference = T const&;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_iterator = typename std::vector<T>::const_iterator;
    using iterator = const_iterator;

    [[nodiscard]] const_iterator begin() const noexcept {
        return values_ == nullptr ? const_iterator() : values_->begin();
    }
    [[nodiscard]] const_iterator end() const noexcept {
        return values_ == nullptr ? const_iterator() : values_->end();
    }
    [[nodiscard]] T const* data() const noexcept { return values_ == nullptr ? nullptr : values_->data(); }
    [[nodiscard]] std::size_t size() const noexcept final { return values_ == nullptr ? 0 : values_->size(); }
    [[nodiscard]] bool empty() const final { return size() == 0; }
    /// \requires index < size().
    [[nodiscard]] T const& operator[](std::size_t index) const noexcept { return (*values_)[index]; }
    /// \throws std::out_of_range.
    [[nodiscard]] T const& at(std::size_t index) const {
        if (index >= size())
            throw std::out_of_range("position " + std::to_string(index) + " is not in a collection of " +
                                    std::to_string(size()) + " values");
        return (*values_)[index];
    }
    /// Linear.
    [[nodiscard]] bool contains(T const& value) const;

    /// Appends; amortised constant time.
    void push_back(T value);
    void add(T value) { push_back(std::move(value)); }
    /// \requires position <= size(). \returns where the value stands now, also when a unique collection had
    /// it before.
    const_iterator insert(std::size_t position, T value);
    const_iterator insert(const_iterator position, T value) {
        return insert(indexOf(position), std::move(value));
    }
    /// Takes out the first equal member, if there is one.
    void remove(T const& value);
    /// \requires index < size(). \returns the position behind the erased value.
    const_iterator erase(std::size_t index);
    const_iterator erase(const_iterator position) { return erase(indexOf(position)); }
    void clear() override;
    /// \requires index < size(). In a unique collection a value that is a member already changes nothing.
    void assign(std::size_t index, T value);
    void assign(const_iterator position, T value) { assign(indexOf(position), std::move(value)); }
    void reserve(std::size_t count);

    [[nodiscard]] meta::Type getCollectionType() const override;
    void copyContents(AbstractOwnedCollection const& other) override;
    [[nodiscard]] std::vector<Value> getAllValues() const override;
    void genericAdd(Value const& value) override;
    void genericRemove(Value const& value) override;
    [[nodiscard]] Value genericAt(unsigned long index) const override;
    void genericInsert(Value const& value, unsigned long index) override;
    void genericReplace(Value const& value, unsigned long index) override;
    void genericRemoveAt(unsigned long index) override;
    [[nodiscard]] std::uint32_t genericIndexOf(Value const& value) const override;

  protected:
    PrimitiveSequence() noexcept = default;

  private:
    void undo(UndoEntry& entry) noexcept override;
    void discard(UndoEntry& entry) noexcept override;
    [[nodiscard]] std::unique_ptr<AbstractOwnedCollection> snapshot() const override;
    void applyInverse(UndoEntry const& entry) override;
    void dropContents() noexcept override { values_.reset(); }

    [[nodiscard]] std::size_t indexOf(const_iterator position) const noexcept {
        return static_cast<std::size_t>(position - begin());
    }
    [[nodiscard]] std::size_t find(T const& value) const noexcept;
    std::vector<T>& values();
    void replaceContents(std::unique_ptr<std::vector<T>> contents);

    std::unique_ptr<std::vector<T>> values_;
};

/// A collection of values in the order of their `<`, each once. It has no positions and so no positional
/// face.
template <class T>
class ZELKOR_API PrimitiveSet : public AbstractPrimitiveCollection {
  public:
    using value_type = T;
    using reference = T const&;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using const_iterator = typename std::set<T>::const_iterator;
    using iterator = const_iterator;

    [[nodiscard]] const_iterator begin() const noexcept { return values().begin(); }
    [[nodiscard]] const_iterator end() const noexcept { return values().end(); }
    [[nodiscard]] std::size_t size() const noexcept final { return values().size(); }
    [[nodiscard]] bool empty() const final { return values().empty(); }
    /// Logarithmic time, as are `add` and `erase`.
    [[nodiscard]] bool contains(T const& value) const { return values().count(value) != 0; }

    // These count as a change of the property also when the content stays as it was.

    void add(T value);
    void insert(T value) { add(std::move(value)); }
    void erase(T const& value);
    void remove(T const& value) { erase(value); }
    void clear() override;

    [[nodiscard]] meta::Type getCollectionType() const override;
    void copyContents(AbstractOwnedCollection const& other) override;
    [[nodiscard]] std::vector<Value> getAllValues() const override;
    void genericAdd(Value const& value) override;
    void genericRemove(Value const& value) override;
    [[nodiscard]] Kind getKind() const noexcept final { return Kind::Set; }

  protected:
    PrimitiveSet() noexcept = default;

  private:
    void undo(UndoEntry& entry) noexcept override;
    void discard(UndoEntry& entry) noexcept override;
    [[nodiscard]] std::unique_ptr<AbstractOwnedCollection> snapshot() const override;
    void applyInverse(UndoEntry const& entry) override;
    void dropContents() noexcept override { values_.reset(); }

    [[nodiscard]] std::set<T> const& values() const noexcept;
    void replaceContents(std::unique_ptr<std::set<T>> contents);

    std::unique_ptr<std::set<T>> values_;
};

extern template class PrimitiveSequence<int>;
extern template class PrimitiveSequence<std::string>;
extern template class PrimitiveSequence<std::u16string>;

} // namespace brant::zero
