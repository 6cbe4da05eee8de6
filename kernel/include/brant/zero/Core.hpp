/// \file
/// The write path: the few functions through which every change of a model goes.
///
/// Typed setters, reflection, builders, loaders and scripts end here. Each function asks questions of a
/// property row and does its checks first, then opens a level, records the old value, changes both ends and
/// commits.
#pragma once

#include "brant/zero/ModelElement.hpp"

#include <cstdint>
#include <cstring>
#include <string>

namespace brant::zero {

class ModelImpl;
class ReferenceSequence;
class UndoLog;
struct UndoEntry;

struct ZELKOR_API Core {
    using Body = ModelElementImpl;
    using Row = schema::PropertyRow;

    // Fields. The row says where in the body a property lives.

    template <class T>
    static T& field(Body& element, Row const& row) noexcept {
        return *reinterpret_cast<T*>(reinterpret_cast<char*>(&element) + row.offset);
    }
    template <class T>
    static T const& field(Body const& element, Row const& row) noexcept {
        return *reinterpret_cast<T const*>(reinterpret_cast<char const*>(&element) + row.offset);
    }
    static AbstractOwnedCollection& collection(Body& element, Row const& row) noexcept {
        return field<AbstractOwnedCollection>(element, row);
    }
    static AbstractOwnedCollection const& collection(Body const& element, Row const& row) noexcept {
        return field<AbstractOwnedCollection>(element, row);
    }
    /// \returns the element in whose field a collection lives.
    static Body* ownerOf(AbstractOwnedCollection const* collection, Row const& row) noexcept {
        return reinterpret_cast<Body*>(const_cast<char*>(reinterpret_cast<char const*>(collection)) -
                                       row.offset);
    }

    /// \returns whether the collection is the field of its owner that its row describes, and not one that
    /// stands alone: only such a collection holds its members in the containment tree.
    static bool isField(AbstractOwnedCollection const& collection) noexcept;

    // Reading.

    /// \returns what a single reference refers to: a live element, a placeholder that does not resolve, a
    /// dead element of the same model, or null. Resolves in place.
    static Body* readReference(Body const& self, Row const& row) {
        Body* stored = field<Body*>(self, row);
        if (stored == nullptr || (stored->valid() && !stored->isProxy())) [[likely]]
            return stored;
        return settleReference(self, row);
    }
    /// \returns the container when it holds `self` through the other end of `row`, else null.
    static Body* readContainerEnd(Body const& self, Row const& row) noexcept {
        Body* holder = self.containerBody();
        return holder != nullptr && self.containmentRow() == row.opposite && holder->valid() ? holder
                                                                                             : nullptr;
    }
    /// \returns whether a single reference or container end is set, without resolving anything.
    static bool hasReference(Body const& self, Row const& row) noexcept;
    /// \returns the body's collection. \throws CannotModifyProxy on a placeholder.
    template <class Collection>
    static Collection& live(Body const& self, Collection const& collection) {
        requireWritable(self);
        return const_cast<Collection&>(collection);
    }
    /// \throws DeadHandle when `self` is dead.
    static void requireAlive(Body const& self) {
        if (!self.valid()) [[unlikely]]
            ModelElement(const_cast<Body*>(&self)).throwDead();
    }
    /// \throws CannotModifyProxy when `self` is a placeholder.
    static void requireWritable(Body const& self) {
        if (self.isProxy()) [[unlikely]]
            refuseProxy();
    }

    // Attributes. Equal values change nothing and open nothing.

    static void setBoolean(Body& self, Row const& row, bool value);
    static void setWord(Body& self, Row const& row, std::uint32_t value); ///< 32-bit numbers and enumerations
    static void setLong(Body& self, Row const& row, std::uint64_t value); ///< 64-bit numbers
    static void setReal(Body& self, Row const& row, double value);
    static void setStdString(Body& self, Row const& row, std::string value);
    static void setString(Body& self, Row const& row, std::u16string value);

    // References.

    /// The setter of a single reference or container end; `target` may be null.
    static void setReference(Body& self, Row const& row, Body* target);
    /// Stores without upkeep and without a record.
    static void basicSetReference(Body& self, Row const& row, Body* target) noexcept;
    /// Adds to a many-valued end, or sets a single one.
    static void addReference(Body& self, Row const& row, Body* target);

    // Containment.

    /// Puts `child` into `owner` through `row`, which owns it from now on, taking it out of wherever it was.
    /// In a sequence it goes to `position`; `append` puts it last. \requires an open level, `child` alive.
    static void contain(Body& owner, Row const& row, Body& child, std::size_t position);
    static constexpr std::size_t append = ~std::size_t{0};
    /// Makes `child` a top-level element. \requires an open level.
    static void uncontain(Body& child);
    /// \throws CannotCreateCrossModelAssociation when the two lie in different models.
    static void requireSameModel(Body const* self, Body const* target);
    /// \throws CircularContainment when `newContainer` is `self` or lies inside it. Linear in the depth.
    static void requireAcyclic(Body const& self, Body const* newContainer);
    /// Changes the containment link and the top-level list, recorded; no holder is touched.
    static void relink(Body& child, Body* container, Row const* row);
    /// Makes the present holder forget `child`, recorded; the link stays.
    static void takeOut(Body& child);
    /// Makes a holder remember `child` again after `takeOut`, recorded; the link stays.
    static void putBack(Body& holder, Row const& row, Body& child);

    // Associations, from the other end.

    static void inverseAdd(Body& self, Body* element, Row const& row);
    static void inverseRemove(Body& self, Body* element, Row const& row);
    static bool inverseContains(Body const& self, Body const* element, Row const& row);
    static bool inverseContainsProxyTo(Body const& self, Body* element, Row const& row);

    // Life and death.

    static void destroy(Body& element);
    static void destroyContents(Body& element);
    static void disassociate(Body& element);
    /// Drops every reference that the element holds, without notice.
    static void dropLinks(Body& element) noexcept;

    // Records.

    /// \returns whether a change of `element` must be recorded now.
    static bool records(Body const& element) noexcept;
    static void recordAttribute(Body& self, Row const& row);
    static void recordReference(Body& self, Row const& row);
    static void recordTouch(AbstractOwnedCollection& collection);
    static void recordLink(Body& child);
    static void notifyModifying(Body& self, Row const& row);
    static void restoreBits(Body& self, Row const& row, std::uint64_t bits) noexcept;
    static std::uint64_t readBits(Body const& self, Row const& row) noexcept;
    static void restoreLink(Body& child, Body* container, Row const* row, std::uint32_t order) noexcept;
    /// Drops the running transaction's records about a collection that is about to die.
    static void forget(AbstractOwnedCollection const& collection) noexcept;

    /// A level for the span of one mutation.
    class ZELKOR_API Level {
      public:
        /// \throws CannotCreateWithoutModel when the element's model is gone.
        explicit Level(Body const& element);
        explicit Level(ModelImpl& model);
        Level(Level const&) = delete;
        Level& operator=(Level const&) = delete;
        ~Level();
        void commit();

      private:
        ModelImpl& model_;
        std::size_t level_;
        bool open_ = true;
    };

    // Creation.

    /// Makes an element in a level of its own and announces it.
    static ModelElement create(schema::ClassTable const& table, Model const& model,
                               boost::uuids::uuid const& uuid);
    /// Makes an element from a builder and puts it into `owner`, in one level.
    static ModelElement createInto(Body& owner, Row const& row, Builder& builder,
                                   boost::uuids::uuid const& uuid);
    /// Puts an element that was just made into its owner. \requires an open level, abandoned when this fails.
    static void place(Body& owner, Row const& row, Body& child);
    static void announce(Body& element);
    /// Takes part in transactions like any other element from now on, without having been announced.
    static void passOver(Body& element) noexcept { element.state_ |= Body::Announced | Body::Silent; }
    static bool isSilent(Body const& element) noexcept { return (element.state_ & Body::Silent) != 0; }
    /// Copies what a builder was given into a body that is not announced yet; contained elements come later.
    /// \returns one bit per index of those given containments.
    static std::uint64_t takeValues(Body& element, Builder& builder);
    static void cascade(Body& element, Builder& builder, std::uint64_t containments);
    /// \returns whether the element may vanish again with the running transaction.
    static bool isNew(Body const& element) noexcept;
    /// True while a placeholder is made, which does not enter the model.
    static bool& makingProxy() noexcept;
    /// \returns the body when it is alive and of that class, else null.
    static Body* castTo(ModelElement const& element, schema::ClassTable const& table) noexcept {
        return element && element.get()->classTable().conformsTo(table) ? element.get() : nullptr;
    }

    // Reflection.

    static void setOrAdd(Builder& builder, Row const& row, Value const& value);
    static void setOrAdd(Builder& builder, Row const& row, std::unique_ptr<Builder> sub);
    /// \returns the element in a value for a reference. \throws CannotCastIncompatibleTypes for a wrong
    /// class.
    static Body* targetOf(Row const& row, Value const& value);

    // Meta objects.

    static Row const& rowOf(meta::Property const& property);
    /// \returns the row when the element's class has it. \throws NoSuchProperty otherwise.
    static Row const& rowFor(Body const& element, meta::Property const& property);
    static meta::Property propertyOf(Row const* row);

    static void basicSetContainerEnd(Body& self, Row const& row, Body* target);
    static void dropContents(AbstractOwnedCollection& collection) noexcept;
    static void replaceByProxy(ReferenceCollection& collection, ModelElement const& target,
                               ModelElement const& proxy);

    static ReferenceSequence& sequence(Body& element, Row const& row) noexcept {
        return field<ReferenceSequence>(element, row);
    }
    static ReferenceSequence const& sequence(Body const& element, Row const& row) noexcept {
        return field<ReferenceSequence>(element, row);
    }

    // For the collections.

    /// \returns the running transaction's log, ready for one more entry, when a change of the collection must
    /// be recorded; else null.
    static UndoLog* logFor(AbstractOwnedCollection const& collection);
    /// The order key of an element among its siblings.
    static std::uint32_t& order(Body& element) noexcept { return element.order_; }
    static std::uint32_t order(Body const& element) noexcept { return element.order_; }
    static std::uint32_t createdSlot(Body const& element) noexcept { return element.createdSlot_; }
    static std::uint32_t registrySlot(Body const& element) noexcept { return element.registrySlot_; }
    /// \returns a detached copy of a collection.
    static std::unique_ptr<AbstractOwnedCollection> snapshotOf(AbstractOwnedCollection const& collection);
    static void applyInverse(AbstractOwnedCollection& snapshot, UndoEntry const& entry);
    /// \returns the size of a collection that is not empty: 1, or 2 for anything larger.
    static std::size_t sizeUpToTwo(AbstractOwnedCollection const& collection);

  private:
    friend class ReferenceSequence;
    friend class TransactionCoordinator;
    friend class ModelImpl;

    static Body* settleReference(Body const& self, Row const& row);
    [[noreturn]] static void refuseProxy();
    template <class T>
    static void setScalar(Body& self, Row const& row, T value);
    template <class T>
    static void setText(Body& self, Row const& row, T value);
    static void setContained(Body& self, Row const& row, Body* target);
    static void replaceField(Body& self, Row const& row, Body* target);
    static void destroyTree(Body& root);
    static void cascade(Body& element, Row const& row, Builder& builder);
    static void takeAttribute(Body& element, Row const& row, Builder& builder);
    static void finishDestruction(Body& element);
};

} // namespace brant::zero
