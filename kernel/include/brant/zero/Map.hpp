/// \file
/// The collection of elements keyed by one of their texts.
#pragma once

#include "brant/zero/Core.hpp"
#include "brant/zero/WithProxies.hpp"

#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace brant::zero {

/// What an insert does when another element has the key.
enum class CollisionResolution : std::uint32_t {
    Report,  ///< throws `UniquenessConstraint`
    Keep,    ///< changes nothing
    Replace, ///< the old member goes, with full upkeep
};

/// Members of a map: the key is the text that the property of the key row had when the member joined.
struct MapMembers {
    using Container = std::map<std::u16string, ModelElement, std::less<>>; // in code-unit order
    [[nodiscard]] static std::u16string const& key(schema::PropertyRow const& row,
                                                   ModelElementImpl const& element) {
        return Core::field<std::u16string>(element, *row.related);
    }
    [[nodiscard]] static Container::value_type entry(schema::PropertyRow const& row,
                                                     ModelElement const& element) {
        return {key(row, *bodyOf(element)), element};
    }
    [[nodiscard]] static ModelElement const& member(Container::value_type const& entry) noexcept {
        return entry.second;
    }
};

extern template class ZELKOR_API ReferenceCollectionWithProxies<GenericMapInterface, MapMembers>;

/// A collection of counted references in the order of their keys, without its element type.
///
/// A key is a copy: who changes the key property of a member takes it out before and puts it back after.
/// Lookups take logarithmic time and touch no element.
class ZELKOR_API ReferenceMap : public ReferenceCollectionWithProxies<GenericMapInterface, MapMembers> {
  public:
    void genericAdd(ModelElement const& element) override;
    /// With upkeep, like `genericClear`: a keyed collection has no restoring form of it.
    void genericBasicClear() override { genericClear(); }
    [[nodiscard]] ModelElement genericGet(Value const& key) const override;
    [[nodiscard]] meta::Type getQualifierType() const override;
    [[nodiscard]] std::vector<Value> genericKeys() const override;
    /// \returns the keys as `String` values, in code-unit order.
    [[nodiscard]] std::vector<Value> getAllKeys() const;

  protected:
    friend struct Core;

    ReferenceMap() noexcept = default;

    /// Null and dead bodies, and the member that is there already, do nothing; a placeholder joins the
    /// placeholders.
    void insertOne(ModelElementImpl* element, CollisionResolution resolution);
    [[nodiscard]] ModelElementImpl* get(std::u16string_view key) const;
    bool eraseKey(std::u16string_view key);

    /// \throws UniquenessConstraint when the key is taken. \requires an open level.
    void recordedInsert(ModelElementImpl* element);
    /// Takes the very element out, whatever key it stands under. \requires an open level.
    void recordedErase(ModelElementImpl* element);

  private:
    [[nodiscard]] std::unique_ptr<AbstractOwnedCollection> snapshot() const override;
    void join(ModelElementImpl* element);
};

/// The collection of elements of class `T` by `Key`: a bidirectional range in key order that hands out
/// handles by value. Placeholders are neither counted nor iterated. `T` may be incomplete where it is only
/// declared.
template <class Key, class T>
class ElementMap : public ReferenceMap {
  public:
    static_assert(std::is_same_v<Key, std::u16string>, "elements are keyed by UTF-16 text");

    class Iterator;
    using key_type = Key;
    using value_type = T;
    using reference = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using iterator = Iterator;
    using const_iterator = Iterator;

    [[nodiscard]] Iterator begin() const noexcept { return Iterator(entries().begin()); }
    [[nodiscard]] Iterator end() const noexcept { return Iterator(entries().end()); }

    /// \returns the member under the key, or a null handle; never makes an entry.
    [[nodiscard]] T operator[](std::u16string_view key) const { return handleOn<T>(get(key)); }
    [[nodiscard]] bool contains(std::u16string_view key) const { return get(key) != nullptr; }
    [[nodiscard]] bool contains(T const& element) const { return genericContains(element); }
    /// \returns the keys in code-unit order.
    [[nodiscard]] std::vector<Key> keys() const {
        std::vector<Key> keys;
        keys.reserve(size());
        for (auto const& [key, element] : entries())
            keys.push_back(key);
        return keys;
    }

    /// A null or dead handle, or a member, does nothing.
    /// \throws UniquenessConstraint when another element has the key and `resolution` is `Report`.
    /// \throws CannotCreateCrossModelAssociation, CircularContainment.
    void insert(T const& element, CollisionResolution resolution = CollisionResolution::Report) {
        insertOne(bodyOf(element), resolution);
    }
    void add(T const& element) { insert(element); }
    void remove(T const& element) { removeOne(bodyOf(element)); }
    /// \returns whether there was a member under the key.
    bool erase(std::u16string_view key) { return eraseKey(key); }
    void clear() { genericClear(); }
};

template <class Key, class T>
class ElementMap<Key, T>::Iterator {
  public:
    using iterator_concept = std::bidirectional_iterator_tag;
    using iterator_category = std::input_iterator_tag; // hands out values, not references
    using value_type = T;
    using reference = T;
    using pointer = HandleArrow<T>;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;

    [[nodiscard]] Key const& key() const noexcept { return position_->first; }
    [[nodiscard]] T operator*() const { return handleOn<T>(position_->second.get()); }
    [[nodiscard]] HandleArrow<T> operator->() const { return HandleArrow<T>(**this); }
    Iterator& operator++() {
        ++position_;
        return *this;
    }
    Iterator& operator--() {
        --position_;
        return *this;
    }
    Iterator operator++(int) {
        Iterator const old = *this;
        ++*this;
        return old;
    }
    Iterator operator--(int) {
        Iterator const old = *this;
        --*this;
        return old;
    }
    friend bool operator==(Iterator const& a, Iterator const& b) noexcept {
        return a.position_ == b.position_;
    }

  private:
    friend class ElementMap;
    explicit Iterator(MapMembers::Container::const_iterator position) noexcept : position_(position) {}

    MapMembers::Container::const_iterator position_;
};

} // namespace brant::zero
