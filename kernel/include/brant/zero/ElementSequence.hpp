/// \file
/// The ordered collection of elements of one class.
#pragma once

#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/TypedAccess.hpp"

#include <compare>
#include <cstddef>
#include <iterator>
#include <stdexcept>

namespace brant::zero {

/// An ordered collection of `T`, a random-access range that hands out handles by value.
///
/// Reading a slot resolves a placeholder in it when its target is there. A change through the collection
/// keeps the other end of the association or the containment in step, in one transaction level; a unique
/// collection takes each element once. Costs are those of `ReferenceSequence`. Any change invalidates
/// iterators, except that those in front of it stay good. `T` may be incomplete where the collection is only
/// declared.
template <class T>
class ElementSequence : public ReferenceSequence {
  public:
    class Iterator;
    using value_type = T;
    using reference = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using iterator = Iterator;
    using const_iterator = Iterator;

    [[nodiscard]] Iterator begin() const noexcept { return {this, 0}; }
    [[nodiscard]] Iterator end() const noexcept { return {this, size()}; }

    /// \requires index < size().
    [[nodiscard]] T operator[](std::size_t index) const {
        ModelElementImpl* stored = slot(index);
        return handleOn<T>(stored->isProxy() ? resolved(index) : stored);
    }
    /// \throws std::out_of_range.
    [[nodiscard]] T at(std::size_t index) const {
        if (index >= size())
            throw std::out_of_range("position " + std::to_string(index) + " is not in a collection of " +
                                    std::to_string(size()) + " elements");
        return (*this)[index];
    }
    /// False for a null handle and for a placeholder. Constant time where the element knows its one holder.
    [[nodiscard]] bool contains(T const& element) const { return containsOne(bodyOf(element)); }

    /// Appends. A null or dead handle, and one that is there already in a unique collection, does nothing.
    /// \throws CannotCreateCrossModelAssociation, CircularContainment.
    void add(T const& element) { addOne(bodyOf(element)); }
    /// As `add`, but in front of `position`; a position behind the end counts as the end.
    /// \returns where the element stands now, also when it was there before; the end for a null or dead
    /// handle.
    Iterator insert(std::size_t position, T const& element) {
        return {this, std::min(insertOne(position, bodyOf(element)), size())};
    }
    Iterator insert(Iterator const& position, T const& element) { return insert(position.index_, element); }
    /// Takes out the first occurrence, of a dead element too; does nothing when there is none.
    void remove(T const& element) { removeOne(bodyOf(element)); }
    /// \requires index < size(). \returns the position behind the erased element.
    Iterator erase(std::size_t index) {
        eraseAt(index);
        return {this, index};
    }
    Iterator erase(Iterator const& position) { return erase(position.index_); }
    Iterator erase(Iterator const& first, Iterator const& last) {
        eraseRange(first.index_, last.index_);
        return {this, first.index_};
    }
    void clear() { eraseRange(0, size()); }
    /// Puts `element` in the place of the one at `index`; the element that stands there already is fine.
    /// \requires index < size().
    /// \throws CannotAddNonExistentObject for a null or dead handle, CannotAddSecondObject for another member
    /// of a unique collection, and what `add` throws.
    void assign(std::size_t index, T const& element) { replaceAt(index, bodyOf(element)); }
    void assign(Iterator const& position, T const& element) { assign(position.index_, element); }
};

template <class T>
class ElementSequence<T>::Iterator {
  public:
    using iterator_concept = std::random_access_iterator_tag;
    using iterator_category = std::input_iterator_tag; // hands out values, not references
    using value_type = T;
    using reference = T;
    using pointer = HandleArrow<T>;
    using difference_type = std::ptrdiff_t;

    constexpr Iterator() noexcept = default;

    [[nodiscard]] T operator*() const { return (*sequence_)[index_]; }
    [[nodiscard]] HandleArrow<T> operator->() const { return HandleArrow<T>(**this); }
    [[nodiscard]] T operator[](difference_type n) const { return *(*this + n); }

    Iterator& operator++() noexcept { return *this += 1; }
    Iterator& operator--() noexcept { return *this -= 1; }
    Iterator operator++(int) noexcept {
        Iterator const old = *this;
        ++*this;
        return old;
    }
    Iterator operator--(int) noexcept {
        Iterator const old = *this;
        --*this;
        return old;
    }
    Iterator& operator+=(difference_type n) noexcept {
        index_ += static_cast<std::size_t>(n);
        return *this;
    }
    Iterator& operator-=(difference_type n) noexcept { return *this += -n; }
    friend Iterator operator+(Iterator i, difference_type n) noexcept { return i += n; }
    friend Iterator operator+(difference_type n, Iterator i) noexcept { return i += n; }
    friend Iterator operator-(Iterator i, difference_type n) noexcept { return i -= n; }
    friend difference_type operator-(Iterator const& a, Iterator const& b) noexcept {
        return static_cast<difference_type>(a.index_) - static_cast<difference_type>(b.index_);
    }
    friend bool operator==(Iterator const& a, Iterator const& b) noexcept { return a.index_ == b.index_; }
    friend auto operator<=>(Iterator const& a, Iterator const& b) noexcept { return a.index_ <=> b.index_; }

  private:
    friend class ElementSequence;
    Iterator(ElementSequence const* sequence, std::size_t index) noexcept
        : sequence_(sequence), index_(index) {}

    ElementSequence const* sequence_ = nullptr;
    std::size_t index_ = 0;
};

} // namespace brant::zero
