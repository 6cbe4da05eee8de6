/// \file
/// Change records: which properties of an element changed in a transaction, and their old values.
#pragma once

#include "brant/zero/Collection.hpp"
#include "brant/zero/Model.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/meta/Class.hpp"

#include <boost/dynamic_bitset.hpp>

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace brant::zero {

class UndoLog;

/// Which properties changed: one bit per index of the class chain, and no values.
class ZELKOR_API Changes {
  public:
    /// `count` may be the highest index or the number of indices; every index of the class gets a bit either
    /// way.
    Changes(boost::uuids::uuid const& uuid, Model model, meta::Class metaClass, unsigned long count);
    Changes(Changes const&) = delete;
    Changes& operator=(Changes const&) = delete;
    virtual ~Changes();

    [[nodiscard]] boost::uuids::uuid const& uuid() const noexcept { return uuid_; }
    [[nodiscard]] Model const& getModel() const noexcept { return model_; }
    [[nodiscard]] meta::Class const& getMetaClass() const noexcept { return metaClass_; }
    [[nodiscard]] boost::dynamic_bitset<> const& bits() const noexcept { return bits_; }
    [[nodiscard]] bool changed(unsigned long index) const noexcept {
        return index < bits_.size() && bits_[index];
    }
    void mark(unsigned long index);
    void clear(unsigned long index);
    /// \returns the number of indices that the record was made for.
    [[nodiscard]] unsigned long count() const noexcept { return count_; }

  private:
    boost::uuids::uuid uuid_;
    Model model_;
    meta::Class metaClass_;
    unsigned long count_;
    boost::dynamic_bitset<> bits_;
};

/// The same with old values. Made when someone asks: for `onCommit`, or to read old values while a
/// transaction runs.
class ZELKOR_API Storage : public Changes {
  public:
    using Changes::Changes;
    ~Storage() override;

    /// Remembers the old container and the property through which it held the element; both may be null.
    void setOldContainer(ModelElement const& container, meta::Property const& feature);
    [[nodiscard]] ModelElement const& oldContainer() const noexcept { return oldContainer_; }

    /// Clears the bits of the properties that ended up as they were. Cheap on purpose: a collection of two or
    /// more elements counts as changed once it was touched.
    void revertUnchanged(ModelElementImpl* element);
    /// \returns the old value of a property whose bit is set; an absent value otherwise. An old collection
    /// that was empty is an empty collection.
    [[nodiscard]] Value getOldValue(meta::Property const& property, ReflectionPrivateTag const& tag) const;

    /// Copies the present value of the property into the record and sets no bit.
    void copyFrom(ModelElementImpl const& element, schema::PropertyRow const& row);
    /// Writes the recorded value of the property back, without upkeep.
    void restoreTo(ModelElementImpl& element, schema::PropertyRow const& row) const;

    /// Builds the old collections that are still to be read from the log.
    void buildAll() const;
    /// Lets the log go, which must not outlive the elements of its transaction. Old collections that nobody
    /// asked for are lost and read as absent.
    void close() noexcept;

  private:
    friend class ChangeCollector;

    struct Old {
        schema::PropertyRow const* row = nullptr;
        std::variant<std::monostate, std::uint64_t, std::string, std::u16string, ModelElement> value;
        std::unique_ptr<AbstractOwnedCollection> collection;
        AbstractOwnedCollection const* live = nullptr; ///< set while the old collection is not built yet
        std::vector<std::size_t> steps;                ///< entries of the log about it
        bool lost = false;                             ///< was not built in time
    };
    [[nodiscard]] Old& slot(schema::PropertyRow const& row) const;
    [[nodiscard]] Old* find(schema::PropertyRow const& row) const noexcept;
    void build(Old& old) const;
    [[nodiscard]] bool isUnchanged(ModelElementImpl const& element, Old& old) const;

    ModelElement oldContainer_;
    schema::PropertyRow const* oldFeature_ = nullptr;
    bool containerTouched_ = false;
    mutable std::vector<Old> old_;
    std::shared_ptr<UndoLog> log_;
};

} // namespace brant::zero
