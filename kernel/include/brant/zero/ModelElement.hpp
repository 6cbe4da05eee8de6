/// \file
/// The untyped element handle and the body behind every element.
#pragma once

#include "brant/zero/ElementImpl.hpp"
#include "brant/zero/Exceptions.hpp"
#include "brant/zero/Hash.hpp"
#include "brant/zero/Schema.hpp"

#include <boost/optional/optional_fwd.hpp>

#include <cassert>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace brant::zero {

class AbstractOwnedCollection;
class Builder;
class BuilderWrapperBase;
class Changes;
class Constrainables;
class Model;
class ModelElement;
class ModelElementImpl;
class ReferenceCollection;
class Storage;
class Value;
struct Core;
struct ProxyId;

namespace meta {
class Class;
class Operation;
class Property;
} // namespace meta

/// Says how a reflective access treats proxies. The three instances are told apart by address.
class ZELKOR_API ReflectionPrivateTag {
  public:
    static ReflectionPrivateTag const PUBLIC_ACCESS;    ///< proxies are resolved on reading
    static ReflectionPrivateTag const NO_PROXY_RESOLVE; ///< what is stored is handed out, proxies included
    static ReflectionPrivateTag const IN_MEMORY_ONLY;   ///< treated as `NO_PROXY_RESOLVE`

    [[nodiscard]] bool resolves() const noexcept { return this == &PUBLIC_ACCESS; }
    ReflectionPrivateTag(ReflectionPrivateTag const&) = delete;
    ReflectionPrivateTag& operator=(ReflectionPrivateTag const&) = delete;

  private:
    ReflectionPrivateTag() = default;
};

/// A counted handle on any element: one pointer wide, cheap to copy, null by default.
///
/// An element handle keeps the element's memory, not its model and not its place in it. A handle on an
/// element that was destroyed, rolled back, or whose model is gone is false as a `bool`; using it throws
/// `DeadHandle`, which says why. Copies may be dropped on any thread; everything else belongs to the model's
/// one thread.
class ZELKOR_API ModelElement {
  public:
    using Impl = ModelElementImpl;
    using Builder = zero::Builder;
    using Constrainables = zero::Constrainables;

    constexpr ModelElement() noexcept = default;
    constexpr ModelElement(std::nullptr_t) noexcept {}
    explicit ModelElement(Impl* impl) noexcept;
    ModelElement(ModelElement const& other) noexcept : impl_(other.impl_) { retain(); }
    ModelElement(ModelElement&& other) noexcept : impl_(std::exchange(other.impl_, nullptr)) {}
    ModelElement& operator=(ModelElement const& other) noexcept {
        ModelElement(other).swap(*this);
        return *this;
    }
    ModelElement& operator=(ModelElement&& other) noexcept {
        ModelElement(std::move(other)).swap(*this);
        return *this;
    }
    ~ModelElement() { release(); }

    void swap(ModelElement& other) noexcept { std::swap(impl_, other.impl_); }

    /// \returns true while the handle is not null and its element is alive.
    explicit operator bool() const noexcept { return impl_ != nullptr && impl_->valid(); }

    /// Identity of the elements, not of their contents.
    friend bool operator==(ModelElement const& a, ModelElement const& b) noexcept {
        return a.impl_ == b.impl_;
    }
    friend bool operator==(ModelElement const& a, std::nullptr_t) noexcept { return a.impl_ == nullptr; }

    /// \returns the body without a check; null for a null handle. \requires a live element for any use of it.
    [[nodiscard]] Impl* get() const noexcept;
    Impl* operator->() const noexcept;

    void addRef() const noexcept { retain(); }
    void removeRef() const noexcept { release(); }

    // What every element answers. Each throws `DeadHandle` on a null or dead handle.

    /// \returns the identity, stable across saving and loading.
    [[nodiscard]] boost::uuids::uuid uuid() const;
    /// \returns the model that holds the element.
    [[nodiscard]] Model getModel() const;
    /// \returns the run-time class.
    [[nodiscard]] meta::Class const& getMetaClass() const;
    static meta::Class const& metaClass();
    /// \returns the element that owns this one, or null for a top-level element.
    [[nodiscard]] ModelElement container() const;
    /// \returns the property through which the container holds the element, or null.
    [[nodiscard]] meta::Property containmentFeature() const;
    /// \returns true for a placeholder whose target is not in the model.
    [[nodiscard]] bool isProxy() const;
    /// Destroys the element and all that it contains, in one transaction. References to it from elsewhere
    /// read as dead handles. Linear in the size of the subtree, at any depth.
    void destroy() const;

    /// \returns whether the property has a value worth reading: always for a single attribute, "not empty"
    /// for a collection, "refers to something" for a reference. \throws NoSuchProperty when the class lacks
    /// it.
    [[nodiscard]] bool
    hasPropertyValue(meta::Property const& property,
                     ReflectionPrivateTag const& tag = ReflectionPrivateTag::PUBLIC_ACCESS) const;
    /// \returns the value; of a many-valued property a value that refers to the live collection.
    /// \throws NoSuchProperty when the class lacks it.
    [[nodiscard]] Value
    getPropertyValue(meta::Property const& property,
                     ReflectionPrivateTag const& tag = ReflectionPrivateTag::PUBLIC_ACCESS) const;
    /// Sets a property as its typed setter does; a stored many-valued property has its content replaced.
    /// \throws NoSuchProperty, CannotSetReadOnlyProperty, CannotCastIncompatibleTypes.
    void setPropertyValue(meta::Property const& property, Value const& value,
                          ReflectionPrivateTag const& tag = ReflectionPrivateTag::PUBLIC_ACCESS) const;
    /// Calls an operation by reflection. \throws InvalidValue for a wrong number of arguments or an operation
    /// that cannot be called, CannotCastIncompatibleTypes for an argument of the wrong type.
    Value invoke(meta::Operation const& operation, std::vector<Value> const& arguments,
                 ReflectionPrivateTag const& tag = ReflectionPrivateTag::PUBLIC_ACCESS) const;

    /// Checked downcast: every element is one.
    static ModelElement cast(ModelElement const& element) noexcept { return element; }

  protected:
    /// \returns the body. \throws DeadHandle when null or dead.
    [[nodiscard]] Impl& checked() const {
        if (impl_ == nullptr || !impl_->valid()) [[unlikely]]
            throwDead();
        return *get();
    }

  private:
    friend struct Core;

    void retain() const noexcept {
        if (impl_ != nullptr) impl_->addRef();
    }
    void release() const noexcept {
        if (impl_ != nullptr) impl_->removeRef();
    }
    [[noreturn]] void throwDead() const;

    ElementImpl* impl_ = nullptr;
};

/// Where a dangling reference pointed: a placeholder carries one.
struct ZELKOR_API ProxyId {
    std::u16string model;                     ///< URI of the model of the target; empty for this one
    std::u16string element;                   ///< identity of the target, canonical text
    std::shared_ptr<std::u16string> external; ///< set when the target lies in another model

    [[nodiscard]] bool isExternal() const noexcept { return external != nullptr; }
    friend ZELKOR_API bool operator==(ProxyId const& a, ProxyId const& b) noexcept;
};

/// The body of an element: identity, place in the containment tree, and the virtual face of its class.
///
/// Bodies are reached through handles. The operations here are the write path's vocabulary; `basic`
/// operations do no upkeep of the other end of an association. All of it belongs to the model's one thread.
class ZELKOR_API ModelElementImpl : public ElementImpl {
  public:
    using Builder = zero::Builder;
    using ReflectionPrivateTag = zero::ReflectionPrivateTag;
    using Storage = zero::Storage;
    using Changes = zero::Changes;
    /// Passed to `basicSetContainer` by collections, which are not container ends.
    static constexpr unsigned long NO_INDEX = ~0ul;

    static void* operator new(std::size_t size);
    static void operator delete(void* memory, std::size_t size) noexcept;

    [[nodiscard]] virtual schema::ClassTable const& classTable() const noexcept = 0;
    [[nodiscard]] meta::Class const& getMetaClass() const;
    /// \returns the model, or a null handle once it is gone.
    [[nodiscard]] Model getModel() const;
    /// \returns the model's body, null once it is gone.
    [[nodiscard]] ModelImpl* model() const noexcept {
        return liveness_ == Liveness::ModelGone ? nullptr : owner_;
    }
    /// \returns the identity as canonical text.
    [[nodiscard]] std::string identifier() const;
    [[nodiscard]] ModelElement This() const { return ModelElement(const_cast<ModelElementImpl*>(this)); }

    [[nodiscard]] bool isProxy() const noexcept { return (state_ & Proxy) != 0; }
    [[nodiscard]] ProxyId getProxyId() const;
    /// \returns the id that a placeholder of this element carries. The flag is accepted and not used.
    [[nodiscard]] ProxyId getPersistentProxyId(bool flag) const;

    [[nodiscard]] ModelElement container() const { return ModelElement(container_); }
    [[nodiscard]] ModelElement basicContainer() const { return container(); }
    [[nodiscard]] meta::Property containmentFeature() const;
    [[nodiscard]] bool isTopLevel() const noexcept { return container_ == nullptr; }
    [[nodiscard]] ModelElementImpl* containerBody() const noexcept { return container_; }
    [[nodiscard]] schema::PropertyRow const* containmentRow() const noexcept { return feature_; }

    void makeUncontained();
    /// \throws CircularContainment when `newContainer` is this element or lies inside it.
    void checkCircularContainment(ModelElement const& newContainer) const;
    /// \throws CannotCreateCrossModelAssociation when the target lies in another model.
    void checkCompatibleModel(ModelElementImpl const* target, meta::Property const& property) const;
    void basicSetContainer(ModelElementImpl* container, meta::Property const& feature, unsigned long index);
    void _setContainedByThis(ModelElementImpl* child, meta::Property const& feature);
    void _basicSetUncontained(ModelElementImpl* child);
    void _inverseAddThis(ModelElementImpl* target, meta::Property const& opposite, bool flag);
    void _inverseRemoveThis(ModelElementImpl* target, meta::Property const& opposite);
    [[nodiscard]] bool _inverseContainsThis(ModelElementImpl const* target,
                                            meta::Property const& opposite) const;
    void _basicAdd(ReferenceCollection* collection, ModelElement const& element);
    void _basicRemove(ReferenceCollection* collection, ModelElement const& element);
    void _basicClear(ReferenceCollection* collection);
    void _basicCopyValues(ReferenceCollection* target, ReferenceCollection const* source);
    bool _basicContainsProxyTo(ReferenceCollection* collection, ModelElement const& element);

    void notifyCreated();
    /// Records the value of the property before it changes. \requires an open transaction.
    void notifyModifying(unsigned long index);
    void destroy();
    void destroyRecursively(ModelElementImpl* child, bool a, bool recursive, bool b);

    bool hasPropertyValue(meta::Property const& property, ReflectionPrivateTag const& tag) const;
    Value getPropertyValue(meta::Property const& property, ReflectionPrivateTag const& tag) const;
    void setPropertyValue(meta::Property const& property, Value const& value,
                          ReflectionPrivateTag const& tag);
    Value invoke(meta::Operation const& operation, std::vector<Value> const& arguments,
                 ReflectionPrivateTag const& tag);
    /// \returns the property with that index in the class chain, or a null handle.
    [[nodiscard]] meta::Property getPropertyByIndex(unsigned long index) const;

    void inverseAdd(ModelElement const& element, meta::Property const& property);
    void inverseRemove(ModelElement const& element, meta::Property const& property);
    bool inverseContainsProxyTo(ModelElement const& element, meta::Property const& property) const;
    /// Drops the plain references that this element holds, as its setters would.
    void disassociateIncoming();
    /// Drops the plain references that this element holds, without notice or upkeep.
    void convertReferencesToProxies(bool flag, boost::optional<ProxyId>& id);
    /// Drops every link of this element, without notice; the other ends are not touched.
    void basicDisassociateAll();
    /// Destroys what this element contains.
    void doDestroy(bool a, bool b);
    /// Calls `ElementImpl::m_callback` for each collection, then marks the element dead.
    void invalidate();
    /// Replaces the reference to `target` by a placeholder with that id.
    void convertToProxy(meta::Property const& property, ProxyId const& id, ModelElement const& target);

    [[nodiscard]] std::unique_ptr<Changes> createChanges() const;
    [[nodiscard]] std::unique_ptr<Storage> createStorage() const;
    void copyValue(Storage* storage, unsigned long index) const;
    void copyStateFromStorage(Storage* storage);

  protected:
    ModelElementImpl(ModelImpl* model, boost::uuids::uuid const& uuid);
    ~ModelElementImpl() override;
    void dispose() noexcept override;

    virtual void notifyDestroying() {}
    virtual void aboutToDestroy() {}
    virtual void didCreate() {}

  private:
    friend struct Core;
    friend class ModelImpl;
    friend class TransactionCoordinator;

    enum State : std::uint16_t { Proxy = 1, Announced = 2, HasHeld = 4, Silent = 8 };

    ModelImpl* owner_;
    ModelElementImpl* container_ = nullptr;
    schema::PropertyRow const* feature_ = nullptr;
    std::uint32_t order_ = 0;       ///< order key among the siblings, or the slot in the top-level list
    std::uint32_t createdSlot_ = 0; ///< place in the created list of the running transaction
    std::uint32_t registrySlot_ = 0;
};

inline ModelElement::ModelElement(Impl* impl) noexcept : impl_(impl) {
    retain();
}
inline ModelElement::Impl* ModelElement::get() const noexcept {
    return static_cast<Impl*>(impl_);
}
inline ModelElement::Impl* ModelElement::operator->() const noexcept {
    assert(impl_ != nullptr && impl_->valid() && "use of a null or dead handle");
    return get();
}

} // namespace brant::zero

template <class T>
requires std::derived_from<T, brant::zero::ModelElement>
struct std::hash<T> {
    /// Hash of the identity; 0 for a null handle. Equal for elements of one identity in two models.
    std::size_t operator()(T const& element) const noexcept {
        auto const* body = element.get();
        return body == nullptr
                   ? 0
                   : brant::zero::services::hashers::Brant0Hasher<boost::uuids::uuid>()(body->uuid());
    }
};
