/// \file
/// From bodies to typed handles and back, for the typed shells of the collections.
#pragma once

#include "brant/zero/ModelElement.hpp"

namespace brant::zero {

/// \returns a handle of class `T` on `body`. \requires the body's class conforms to that of `T`, or a null
/// body. Needs the handle class only, not its body's class, so that headers of collections stay light.
template <class T>
[[nodiscard]] T handleOn(ModelElementImpl* body) noexcept {
    T handle;
    static_cast<ModelElement&>(handle) = ModelElement(body);
    return handle;
}

/// \returns the body behind a handle of any class, null for a null handle.
[[nodiscard]] inline ModelElementImpl* bodyOf(ModelElement const& handle) noexcept {
    return handle.get();
}

/// The arrow of iterators that hand out elements by value.
template <class T>
class HandleArrow {
  public:
    explicit HandleArrow(T handle) noexcept : handle_(std::move(handle)) {}
    T const* operator->() const noexcept { return &handle_; }

  private:
    T handle_;
};

} // namespace brant::zero
