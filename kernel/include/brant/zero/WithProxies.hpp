/// \file
/// What the collections that are no sequences share: members found by a key, and placeholders kept beside
/// them.
#pragma once

#include "brant/zero/Collection.hpp"
#include "brant/zero/Hash.hpp"
#include "brant/zero/TypedAccess.hpp"

#include <memory>
#include <type_traits>
#include <unordered_map>
#include <vector>

template <>
struct std::hash<brant::zero::ProxyId> {
    /// Of the two texts; the external part takes no share.
    std::size_t operator()(brant::zero::ProxyId const& id) const noexcept {
        std::uint64_t seed = brant::zero::hashString(id.model);
        brant::zero::hashCombine(
            seed, brant::zero::hashRange(id.element, [](char16_t unit) { return std::uint64_t{unit}; }));
        return seed;
    }
};

namespace brant::zero {

/// A collection whose members stand in a container of their own kind and whose placeholders stand in a table
/// beside it. Placeholders do not count and reading never resolves them; `resolveAll`, `resolveLocal`,
/// `replaceProxy` and `basicContainsProxyTo` move them over. Two words when empty.
///
/// `Members` says what the container is, how a member's key is found and where in an entry the member stands.
template <class Base, class Members>
class ZELKOR_API ReferenceCollectionWithProxies : public Base {
  public:
    using Container = typename Members::Container;

    [[nodiscard]] std::size_t size() const noexcept { return entries().size(); }
    /// Placeholders do not count.
    [[nodiscard]] bool empty() const override { return entries().empty(); }
    /// The members with their keys, in the container's order; invalidated by any change.
    [[nodiscard]] Container const& entries() const noexcept;

    [[nodiscard]] std::vector<ModelElement> getAllValues() const override;
    [[nodiscard]] std::vector<ModelElement> getAllValuesAndProxies() const override;
    void replaceProxy(ModelElement const& element, unsigned long index) override;
    void resolveAll() override;
    void resolveLocal() override;

    [[nodiscard]] std::size_t genericSize() const override { return size(); }
    void genericRemove(ModelElement const& element) override;
    /// Placeholders go as well.
    void genericClear() override;
    [[nodiscard]] bool genericContains(ModelElement const& element) const override;

    /// Puts a placeholder into the table; one with the same id that is there already stays.
    /// \throws CannotCreateCrossModelAssociation for an external one, when the collection owns its members.
    void addProxy(ModelElement const& proxy);
    void removeProxy(ModelElement const& proxy);

  protected:
    friend struct Core;
    using Iterator = typename Container::const_iterator;

    ReferenceCollectionWithProxies() noexcept = default;

    void basicAdd(ModelElement const& element) override;
    void basicAddWithProxy(ModelElement const& element) override;
    void basicRemove(ModelElement const& element) override;
    /// Placeholders stay.
    void basicClear() override;
    void basicCopyValues(ReferenceCollection const& other) override;
    bool basicContainsProxyTo(ModelElement const& element) override;
    /// Takes in a resolved element without a record. \returns false when its key is taken.
    bool resolveAdd(ModelElement const& element);

    /// \returns the entry of the very element under its present key, or the end.
    [[nodiscard]] Iterator locate(ModelElementImpl const* element) const;
    /// True for a collection that is a field of its owner and owns its members.
    [[nodiscard]] bool owns() const noexcept;
    [[nodiscard]] bool holds(ModelElementImpl const& element) const noexcept;

    /// Null does nothing; a placeholder is taken out of the placeholders.
    void removeOne(ModelElementImpl* element);
    /// Erases the entry and lets its member go. \requires an open level.
    void eraseEntry(Iterator entry);
    /// \returns false, with nothing changed, when the key is taken.
    bool recordedEmplace(ModelElementImpl* element);
    template <class Table = Container>
    void recordedExtract(typename Table::const_iterator entry);
    void copyContent(ReferenceCollectionWithProxies const& other);

  private:
    using ProxyTable = std::unordered_map<ProxyId, ModelElement>;
    struct Content {
        Container members;
        ProxyTable proxies;
    };
    /// Which half of the content a recorded step is about.
    enum Part : std::uint32_t { MemberPart, ProxyPart };

    void undo(UndoEntry& entry) noexcept override;
    void discard(UndoEntry& entry) noexcept override;
    void applyInverse(UndoEntry const& entry) override;
    void dropContents() noexcept override { content_.reset(); }

    Content& content();
    /// \returns one half of the content, made if need be.
    template <class Table>
    [[nodiscard]] Table& table();
    template <class Table>
    static constexpr Part part = std::is_same_v<Table, ProxyTable> ? ProxyPart : MemberPart;

    // Recorded steps on one half. The payload of each is a table with the entries that came or went.
    template <class Table>
    void recordedInsert(Table entry);
    template <class Table>
    void recordedReplace(Table fresh);
    template <class Table>
    void undoStep(UndoEntry& entry) noexcept;
    template <class Table>
    void invertStep(UndoEntry const& entry);
    template <class Table>
    void takeBack(Table const& inserted) noexcept;
    /// Exchanges a placeholder for its target. \returns false when the target's key is taken.
    bool replaceEntry(typename ProxyTable::const_iterator entry, ModelElement const& target);
    template <class Accept>
    void resolveProxies(Accept accept);

    std::unique_ptr<Content> content_;
};

} // namespace brant::zero
