/// \file
/// What all owned collections share, and the reflective face of the collections of elements.
#pragma once

#include "brant/zero/ModelElement.hpp"

#include <cstdint>
#include <vector>

namespace brant::zero {

class ReferenceCollection;
struct UndoEntry;

namespace meta {
class Type;
} // namespace meta

/// Base of every many-valued property of an element.
///
/// A collection knows its property row and, unless it is a detached snapshot, the element it lives in. It is
/// created with its owner, keeps its address for the owner's life and is never copied.
class ZELKOR_API AbstractOwnedCollection {
  public:
    AbstractOwnedCollection(AbstractOwnedCollection const&) = delete;
    AbstractOwnedCollection& operator=(AbstractOwnedCollection const&) = delete;
    virtual ~AbstractOwnedCollection() = default;

    /// One mutation: a transaction level on the owner's model. Dropping it without `commit` restores what it
    /// changed. Does nothing for a detached collection.
    class ZELKOR_API Operation {
      public:
        explicit Operation(AbstractOwnedCollection& collection);
        Operation(Operation const&) = delete;
        Operation& operator=(Operation const&) = delete;
        ~Operation();
        void commit();

      private:
        ModelImpl* model_;
        std::size_t level_;
    };

    /// Tells change tracking that the collection is about to change.
    void modifying();
    [[nodiscard]] meta::Property getCollectionProperty() const;

    [[nodiscard]] virtual schema::PropertyRow const& row() const noexcept = 0;
    /// \returns the element that the collection lives in, null for a detached one.
    [[nodiscard]] virtual ModelElementImpl* owner() const noexcept = 0;
    [[nodiscard]] virtual meta::Type getCollectionType() const = 0;
    [[nodiscard]] virtual bool empty() const = 0;
    /// \returns the bytes that the collection holds outside of its element; texts in it not counted.
    [[nodiscard]] virtual std::size_t heapBytes() const noexcept { return 0; }
    /// Replaces the content by that of a collection of the same class, without upkeep.
    virtual void copyContents(AbstractOwnedCollection const& other) = 0;
    /// \returns the collection itself when it holds elements, else null.
    virtual ReferenceCollection* asReferences() noexcept { return nullptr; }

  protected:
    AbstractOwnedCollection() noexcept = default;

  private:
    friend struct Core;
    friend class TransactionCoordinator;
    friend class UndoLog;

    /// Takes back one recorded step; never fails. The step's payload is consumed.
    virtual void undo(UndoEntry& entry) noexcept = 0;
    /// Drops the payload of a step that is not needed any more.
    virtual void discard(UndoEntry& entry) noexcept = 0;
    /// \returns a detached collection of the same class and property with the same content.
    [[nodiscard]] virtual std::unique_ptr<AbstractOwnedCollection> snapshot() const = 0;
    /// Applies the inverse of a recorded step to a snapshot, leaving the step's payload alone.
    virtual void applyInverse(UndoEntry const& entry) = 0;
    /// Drops all content without notice and without a word to the elements; used when a model dies.
    virtual void dropContents() noexcept = 0;
};

/// A collection of elements. It is its own reflective face: the `generic` operations take untyped handles,
/// check the class and do the full upkeep; the `basic` ones do none and exist to restore state.
class ZELKOR_API ReferenceCollection : public AbstractOwnedCollection {
  public:
    [[nodiscard]] meta::Type getCollectionType() const override;
    void copyContents(AbstractOwnedCollection const& other) override;
    ReferenceCollection* asReferences() noexcept override { return this; }

    /// \returns the property of the other end, or a null handle.
    [[nodiscard]] meta::Property getOpposite() const;
    [[nodiscard]] bool isComposite() const noexcept { return row().contained(); }
    /// \throws CannotCreateCrossModelAssociation when `element` lies in another model than the owner.
    void checkCompatibleModel(ModelElement const& element) const;
    [[nodiscard]] ModelElement resolveProxy(ModelElement const& proxy) const;
    [[nodiscard]] ModelElement peekResolveProxy(ModelElement const& proxy) const;

    /// \returns the resolved members.
    [[nodiscard]] virtual std::vector<ModelElement> getAllValues() const = 0;
    [[nodiscard]] virtual std::vector<ModelElement> getAllValuesAndProxies() const { return getAllValues(); }
    ReferenceCollection* getGenericInterface() noexcept { return this; }
    ReferenceCollection const* getGenericInterface() const noexcept { return this; }
    virtual void replaceProxy(ModelElement const& element, unsigned long index) = 0;
    virtual void resolveAll() = 0;
    virtual void resolveLocal() = 0;

    [[nodiscard]] virtual std::size_t genericSize() const = 0;
    /// A null or dead handle does nothing. \throws CannotAddIncompatibleTypes for an element of a wrong
    /// class.
    virtual void genericAdd(ModelElement const& element) = 0;
    /// Puts the element at that position, exchanging it with the one that stands there.
    virtual void genericEnsureAt(ModelElement const& element, unsigned long index);
    virtual void genericRemove(ModelElement const& element) = 0;
    virtual void genericClear() = 0;
    virtual void genericBasicClear() { basicClear(); }
    [[nodiscard]] virtual bool genericContains(ModelElement const& element) const = 0;
    [[nodiscard]] virtual bool isSequenceInterface() const noexcept { return false; }
    [[nodiscard]] virtual bool isMapInterface() const noexcept { return false; }
    [[nodiscard]] virtual bool isMultimapInterface() const noexcept { return false; }

  protected:
    friend class ModelElementImpl;
    friend struct Core;

    virtual void basicAdd(ModelElement const& element) = 0;
    virtual void basicAddWithProxy(ModelElement const& element) { basicAdd(element); }
    virtual void basicRemove(ModelElement const& element) = 0;
    virtual void basicClear() = 0;
    virtual void basicCopyValues(ReferenceCollection const& other) = 0;
    virtual bool basicContainsProxyTo(ModelElement const& element) = 0;

    /// \returns whether the element is of the collection's class.
    [[nodiscard]] bool conforms(ModelElement const& element) const noexcept;
    /// \throws CannotAddIncompatibleTypes unless it is.
    void requireConforming(ModelElement const& element) const;
};

/// The reflective face of a collection of elements: the collection itself.
using GenericCollectionInterface = ReferenceCollection;

/// The positional half of the reflective face. Positions are not checked.
class ZELKOR_API GenericSequenceInterface : public ReferenceCollection {
  public:
    [[nodiscard]] bool isSequenceInterface() const noexcept override { return true; }
    /// \returns the element at that position, resolved if it can be. \requires index < genericSize().
    [[nodiscard]] virtual ModelElement genericAt(unsigned long index) const = 0;
    virtual void genericInsert(ModelElement const& element, unsigned long index) = 0;
    /// \throws CannotAddSecondObject when the element stands elsewhere in a unique sequence.
    virtual void genericReplace(ModelElement const& element, unsigned long index) = 0;
    virtual void genericRemoveAt(unsigned long index) = 0;
    /// \returns the first position of the very element, or all ones.
    [[nodiscard]] virtual std::uint32_t genericIndexOf(ModelElement const& element) const = 0;
};

/// The keyed half of the reflective face.
class ZELKOR_API GenericMapInterface : public ReferenceCollection {
  public:
    [[nodiscard]] bool isMapInterface() const noexcept override { return true; }
    /// \returns the member under the key, or a null handle. \throws CannotCastIncompatibleTypes unless it is
    /// a `String`.
    [[nodiscard]] virtual ModelElement genericGet(Value const& key) const = 0;
    [[nodiscard]] virtual meta::Type getQualifierType() const = 0;
    /// \returns the keys in code-unit order.
    [[nodiscard]] virtual std::vector<Value> genericKeys() const = 0;
};

} // namespace brant::zero
