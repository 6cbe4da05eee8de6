/// \file
/// The bodies in an ordered collection, for loops that count no references.
#pragma once

#include "brant/zero/ElementSequence.hpp"

#include <cstddef>
#include <iterator>

namespace brant::zero {

/// An input range over the bodies of the elements in a sequence. Placeholders become their targets where
/// those are there, as in a loop over handles; dead entries are passed over. The collection must not change
/// meanwhile.
template <class T>
class Bodies {
  public:
    class Iterator {
      public:
        Iterator(ReferenceSequence const& sequence, std::size_t index) : sequence_(&sequence), index_(index) {
            settle();
        }
        typename T::Impl const& operator*() const { return static_cast<typename T::Impl const&>(*body_); }
        Iterator& operator++() {
            ++index_;
            settle();
            return *this;
        }
        bool operator==(std::default_sentinel_t) const noexcept { return body_ == nullptr; }

      private:
        void settle() {
            for (; index_ < sequence_->size(); ++index_) {
                body_ = sequence_->slot(index_);
                if (body_->isProxy()) body_ = sequence_->resolved(index_);
                if (body_->valid()) return;
            }
            body_ = nullptr;
        }

        ReferenceSequence const* sequence_;
        std::size_t index_;
        ModelElementImpl* body_ = nullptr;
    };

    explicit Bodies(ElementSequence<T> const& sequence) noexcept : sequence_(&sequence) {}
    [[nodiscard]] Iterator begin() const { return Iterator(*sequence_, 0); }
    [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

  private:
    ReferenceSequence const* sequence_;
};

template <class T>
Bodies(ElementSequence<T> const&) -> Bodies<T>;

/// \returns whether the element is a `T`. \requires a live element or a placeholder.
template <class T>
[[nodiscard]] bool isA(ModelElementImpl const& element) noexcept {
    return element.classTable().conformsTo(T::Impl::table);
}
/// \returns the body as that of a `T`, null for a null or dead one. \requires the body to be a `T`.
template <class T>
[[nodiscard]] typename T::Impl const* aliveAs(ModelElementImpl const* body) noexcept {
    return body != nullptr && body->valid() ? static_cast<typename T::Impl const*>(body) : nullptr;
}

} // namespace brant::zero
