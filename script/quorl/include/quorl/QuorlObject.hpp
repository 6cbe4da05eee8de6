#pragma once

#include <boost/intrusive_ptr.hpp>
#include <cstddef>

#include "brant/zero/Export.hpp"

namespace quorl {

class QuorlClass;
class QuorlObject;
namespace factory::basic {
class BindingRegistry;
}

/// One counted reference to a script object. Counts are plain: script objects belong to the host's thread.
using ObjectRef = boost::intrusive_ptr<QuorlObject>;

/// An object of a script class: a class and the native body behind it. The body of a handle class is the
/// handle, in place; the body of a value class lies on the heap.
class ZELKOR_API QuorlObject {
  public:
    /// An object whose constructor has not run yet. Throws CannotInstantiate for classes without objects.
    static ObjectRef allocate(QuorlClass& quorlClass);

    /// For a value class another object with a copy of the value, else this same object.
    ObjectRef copyForAssignment();

    QuorlClass& getQuorlClass() const noexcept { return *_class; }

    /// \returns the body, also of an object whose constructor has not run; see impl::validateSelfPointer.
    void* getSelfPointer() const noexcept;

    /// \returns true when the body is constructed and, for a handle, its target is there.
    bool isValid() const noexcept;

    /// \returns the element that this object stands for, or null when it stands for none.
    void* getImplementation() const noexcept { return _implementation; }

    QuorlObject(QuorlObject const&) = delete;
    QuorlObject& operator=(QuorlObject const&) = delete;

  private:
    friend class factory::basic::BindingRegistry;
    friend void intrusive_ptr_add_ref(QuorlObject* object) noexcept { ++object->_references; }
    friend void intrusive_ptr_release(QuorlObject* object) noexcept {
        if (--object->_references == 0) release(object);
    }

    explicit QuorlObject(QuorlClass& quorlClass) : _class(&quorlClass) {}
    ~QuorlObject() = default;
    ZELKOR_API static void release(QuorlObject* object) noexcept;

    std::size_t _references = 0;
    QuorlClass* _class;
    void* _implementation = nullptr;
    mutable void* _slot = nullptr;
};

} // namespace quorl
