/// \file
/// The unordered collection of elements.
#pragma once

#include "brant/zero/WithProxies.hpp"

#include <cstddef>
#include <iterator>
#include <unordered_set>

namespace brant::zero {

/// Members of a set: each is its own key.
struct SetMembers {
    using Container = std::unordered_set<ModelElement>;
    [[nodiscard]] static ModelElement key(schema::PropertyRow const&, ModelElementImpl const& element) {
        return element.This();
    }
    [[nodiscard]] static ModelElement entry(schema::PropertyRow const&, ModelElement const& element) {
        return element;
    }
    [[nodiscard]] static ModelElement const& member(ModelElement const& entry) noexcept { return entry; }
};

extern template class ZELKOR_API ReferenceCollectionWithProxies<ReferenceCollection, SetMembers>;

/// An unordered collection of counted references, made on demand for a property that its maker keeps by
/// himself: no class of the schema holds one as a field, so members do not move in the containment tree.
/// Constant-time lookups.
class ZELKOR_API ReferenceSet : public ReferenceCollectionWithProxies<ReferenceCollection, SetMembers> {
  public:
    void genericAdd(ModelElement const& element) override;

  protected:
    ReferenceSet() noexcept = default;
    void addOne(ModelElementImpl* element);

  private:
    [[nodiscard]] std::unique_ptr<AbstractOwnedCollection> snapshot() const override;
};

/// The unordered collection of elements of class `T`: a forward range that hands out handles by value, in no
/// order that can be relied on.
template <class T>
class UnorderedElementSet : public ReferenceSet {
  public:
    class Iterator;
    using value_type = T;
    using reference = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using iterator = Iterator;
    using const_iterator = Iterator;

    [[nodiscard]] Iterator begin() const noexcept { return Iterator(entries().begin()); }
    [[nodiscard]] Iterator end() const noexcept { return Iterator(entries().end()); }
    [[nodiscard]] bool contains(T const& element) const { return genericContains(element); }
    /// A null or dead handle, or a member, does nothing; a placeholder joins the placeholders.
    /// \throws CannotCreateCrossModelAssociation.
    void add(T const& element) { addOne(bodyOf(element)); }
    void remove(T const& element) { removeOne(bodyOf(element)); }
    void clear() { genericClear(); }
};

template <class T>
class UnorderedElementSet<T>::Iterator {
  public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag; // hands out values, not references
    using value_type = T;
    using reference = T;
    using pointer = HandleArrow<T>;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;

    [[nodiscard]] T operator*() const { return handleOn<T>(position_->get()); }
    [[nodiscard]] HandleArrow<T> operator->() const { return HandleArrow<T>(**this); }
    Iterator& operator++() {
        ++position_;
        return *this;
    }
    Iterator operator++(int) {
        Iterator const old = *this;
        ++*this;
        return old;
    }
    friend bool operator==(Iterator const& a, Iterator const& b) noexcept {
        return a.position_ == b.position_;
    }

  private:
    friend class UnorderedElementSet;
    explicit Iterator(SetMembers::Container::const_iterator position) noexcept : position_(position) {}

    SetMembers::Container::const_iterator position_;
};

} // namespace brant::zero
