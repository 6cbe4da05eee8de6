/// \file
/// Views: the members of another collection that are of one class.
#pragma once

#include "brant/zero/ReferenceSequence.hpp"
#include "brant/zero/TypedAccess.hpp"

#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>

namespace brant::zero {

/// A view without its element type: shows those members of a sequence of the same element that are of the
/// property's class and pass the filter, in the sequence's order. It stores none of them; every read walks
/// the parent, every change is one of the parent. Reading resolves placeholders that it passes.
class ZELKOR_API ReferenceView : public ReferenceCollection {
  public:
    using Filter = std::function<bool(ModelElement const&)>;

    /// Linear in the size of the parent.
    [[nodiscard]] std::size_t size() const;
    /// Walks the parent up to the first match.
    [[nodiscard]] bool empty() const override;
    [[nodiscard]] std::vector<ModelElement> getAllValues() const override;
    void replaceProxy(ModelElement const& element, unsigned long index) override;
    void resolveAll() override;
    void resolveLocal() override;

    [[nodiscard]] std::size_t genericSize() const override { return size(); }
    /// \throws CannotAddIncompatibleTypes, CannotAddIncompatibleObjectSubset when the filter rejects the
    /// element.
    void genericAdd(ModelElement const& element) override;
    void genericRemove(ModelElement const& element) override;
    /// Takes the matching members out of the parent; the others stay.
    void genericClear() override;
    [[nodiscard]] bool genericContains(ModelElement const& element) const override;

  protected:
    ReferenceView() noexcept = default;

    /// An empty filter accepts everything.
    void setFilter(Filter filter);
    [[nodiscard]] bool accepts(ModelElementImpl const& element) const;
    /// \returns the first position in the parent, from `index` on, of a member of this view; its size if
    /// there is none.
    [[nodiscard]] std::size_t nextMatch(std::size_t index) const;
    [[nodiscard]] std::size_t parentSize() const noexcept;
    [[nodiscard]] ModelElementImpl* parentSlot(std::size_t index) const noexcept;
    /// \throws CannotAddIncompatibleObjectSubset for a live element of another class or one that the filter
    /// rejects.
    void addOne(ModelElementImpl* element);
    void removeOne(ModelElementImpl* element);

    // The state is the parent's, and is saved, restored and cleared there.
    void basicAdd(ModelElement const&) override {}
    void basicRemove(ModelElement const&) override {}
    void basicClear() override {}
    void basicCopyValues(ReferenceCollection const&) override {}
    bool basicContainsProxyTo(ModelElement const&) override { return false; }

  private:
    void undo(UndoEntry&) noexcept override {}
    void discard(UndoEntry&) noexcept override {}
    [[nodiscard]] std::unique_ptr<AbstractOwnedCollection> snapshot() const override;
    void applyInverse(UndoEntry const&) override {}
    void dropContents() noexcept override {}

    /// \returns the collection behind the view, null for a detached view.
    [[nodiscard]] ReferenceSequence* parent() const noexcept;

    std::unique_ptr<Filter> filter_;
};

/// The members of class `T` of a `Parent` collection: a forward range that hands out handles by value. Any
/// change of the parent invalidates iterators.
template <class T, class Parent>
class SubsettedElementSet : public ReferenceView {
  public:
    class Iterator;
    using value_type = T;
    using reference = T;
    using parent_value_type = typename Parent::value_type;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using iterator = Iterator;
    using const_iterator = Iterator;

    [[nodiscard]] Iterator begin() const { return {this, nextMatch(0)}; }
    [[nodiscard]] Iterator end() const noexcept { return {this, parentSize()}; }
    [[nodiscard]] bool contains(parent_value_type const& element) const { return genericContains(element); }
    /// Appends to the parent. A null or dead handle does nothing.
    /// \throws CannotAddIncompatibleObjectSubset for an element that the view would not show, and what the
    /// parent's `add` throws.
    void add(parent_value_type const& element) { addOne(bodyOf(element)); }
    void remove(T const& element) { removeOne(bodyOf(element)); }
    void clear() { genericClear(); }
    /// Restricts the view further; an empty function takes the restriction away.
    void setFilter(std::function<bool(T const&)> filter) {
        if (!filter) return ReferenceView::setFilter({});
        ReferenceView::setFilter([filter = std::move(filter)](ModelElement const& element) {
            return filter(handleOn<T>(bodyOf(element)));
        });
    }
};

template <class T, class Parent>
class SubsettedElementSet<T, Parent>::Iterator {
  public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag; // hands out values, not references
    using value_type = T;
    using reference = T;
    using pointer = HandleArrow<T>;
    using difference_type = std::ptrdiff_t;

    constexpr Iterator() noexcept = default;

    [[nodiscard]] T operator*() const { return handleOn<T>(view_->parentSlot(index_)); }
    [[nodiscard]] HandleArrow<T> operator->() const { return HandleArrow<T>(**this); }
    Iterator& operator++() {
        index_ = view_->nextMatch(index_ + 1);
        return *this;
    }
    Iterator operator++(int) {
        Iterator const old = *this;
        ++*this;
        return old;
    }
    friend bool operator==(Iterator const& a, Iterator const& b) noexcept { return a.index_ == b.index_; }

  private:
    friend class SubsettedElementSet;
    Iterator(SubsettedElementSet const* view, std::size_t index) noexcept : view_(view), index_(index) {}

    SubsettedElementSet const* view_ = nullptr;
    std::size_t index_ = 0;
};

} // namespace brant::zero
