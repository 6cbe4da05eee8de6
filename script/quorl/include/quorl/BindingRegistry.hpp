#pragma once

#include "quorl/QuorlClass.hpp"

namespace quorl::factory {

namespace basic {

/// Which script object stands for which element: at most one at a time for each address. The registry holds
/// no reference; an object leaves it when its last reference goes. All operations are O(1).
class ZELKOR_API BindingRegistry {
  public:
    /// \returns the object of the element, made if there is none; `created`, if given, tells which.
    /// Throws NoSuchClass, and CannotInstantiate for a class that is no handle class.
    static ObjectRef announce(void* implementation, InternedName className, bool* created = nullptr);

    /// Binds the unconstructed object in element 0 of `array` to the element. When the element has an object
    /// already, that one takes the place in the array and `created` is false.
    static void announceForConstructor(void* implementation, InternedName className, krelArray& array,
                                       bool* created = nullptr);

    /// An object for the element that the registry does not know.
    static ObjectRef announceWithoutStoring(void* implementation, InternedName className);

    /// Forgets the element; its object, if it lives on, is found no more. \returns false when it was unknown.
    static bool remove(void* implementation) noexcept;

    static QuorlObject* find(void* implementation) noexcept;
    static std::size_t size() noexcept;

  private:
    friend class quorl::QuorlObject;
    static ObjectRef make(void* implementation, InternedName className);
    static void bind(QuorlObject& object, void* implementation);
};

} // namespace basic

namespace impl {

/// \returns the body of the one object in `self`. Throws WrongType when the array is not of the class, and
/// InvalidHandle when it has not exactly one object, the object's constructor has not run, or its element is
/// gone.
ZELKOR_API void* validateSelfPointer(krelArray const& self, QuorlClass const& quorlClass);
/// The same for an object whose class is known to fit.
ZELKOR_API void* validateSelfPointer(QuorlObject const& self);

} // namespace impl

/// The value objects that are allocated and not constructed, by the address of the body.
class ZELKOR_API CopyableSupport {
  public:
    static void addToUnconstructedSet(void* body);
    static bool isInUnconstructedSet(void const* body) noexcept;
    static bool removeFromUnconstructedSet(void const* body) noexcept; ///< false when it was not in it
};

} // namespace quorl::factory
