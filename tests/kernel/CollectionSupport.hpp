/// \file
/// The schema of `schema/`, three classes that have each kind of collection once, and what the tests of the
/// kinds share: the kernel is tested on it without the model.
#pragma once

#include "shop/All.hpp"

#include "brant/zero/Core.hpp"
#include "brant/zero/Element.hpp"
#include "brant/zero/Standalone.hpp"
#include "brant/zero/Value.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <utility>
#include <vector>

namespace shop {

using namespace brant::zero;
namespace m = brant0::messages;

class ShopPackage final : public meta::AbstractMetaPackage {
  public:
    static ShopPackage& getInstance();

  private:
    ShopPackage();

    static schema::PackageTable const* const packages;
    static schema::RootTable const root;
};

/// The properties of a shelf, as they stand in the schema.
enum Row { Items, Parts, Links, Marks, Catalog, Gadgets, Notes, Numbers, Lid };
inline schema::PropertyRow const& rowOf(Row row) {
    return Shelf::Impl::rows[row];
}
meta::Property propertyOf(Row row);

using Names = std::vector<std::u16string>;

/// \returns the names of a range of items, in order; "-" for a dead one.
template <class Range>
Names namesOf(Range const& range) {
    Names names;
    for (auto const& item : range)
        names.push_back(item ? Item(item.get()).getName() : u"-");
    return names;
}

template <class Message, class F>
void expectReport(F action) {
    EXPECT_THROW(action(), MessageException<Message>);
}

/// An empty shelf.
class CollectionTest : public testing::Test {
  protected:
    /// A gadget when the name begins with a capital.
    Item item(std::u16string const& name, boost::uuids::uuid const& uuid = {});
    /// One item for each letter.
    std::vector<Item> letters(std::u16string const& names);
    /// A placeholder for the item of that identity, in another model if so told.
    Item proxy(boost::uuids::uuid const& target, bool external = false);
    void expectSound();

    Model model = Model::create({}, {}, DefaultWorkQueueFactory());
    Shelf shelf = Shelf::create(model);
    ElementSequence<Item>& items = shelf.getItemsMutable(); ///< owned, unique, with another end
    ElementSequence<Item>& parts = shelf.getPartsMutable(); ///< owned, repeating
    ElementSequence<Item>& links = shelf.getLinksMutable(); ///< not owned, repeating
    ElementSequence<Item>& marks = shelf.getMarksMutable(); ///< not owned, unique
    ElementMap<std::u16string, Item>& catalog = shelf.getCatalogMutable();
    SubsettedElementSet<Gadget, ElementSequence<Item>>& gadgets = shelf.getGadgetsMutable();
    PrimitiveSequence<std::string>& notes = shelf.getNotesMutable();
    PrimitiveSequence<int>& numbers = shelf.getNumbersMutable(); ///< unique
};

/// A random walk over one collection of a shelf: its steps change the collection and a plain one alike, in
/// levels that are kept or abandoned at random. After each step both have the same content, and so has each
/// old value of a commit.
template <class Content>
class Walk {
  public:
    using Read = std::function<Content(AbstractOwnedCollection const&)>;

    Walk(Shelf const& shelf, Row row, unsigned seed, Read read)
        : shelf_(shelf), row_(row), read_(std::move(read)), random_(seed) {}

    Content expected;
    std::size_t below(std::size_t bound) { return random_() % bound; }

    template <class Step>
    void run(int steps, Step step) {
        AbstractOwnedCollection& collection = Core::collection(*shelf_.get(), rowOf(row_));
        Content committed = expected;
        std::size_t told = 0;
        auto const subscription = shelf_.getModel().onCommit([&](CommitNotice const& notice) {
            for (ElementChange const& change : notice.changed)
                if (change.element() == shelf_) {
                    EXPECT_EQ(read_(*change.oldValue(propertyOf(row_)).collection()), committed);
                    ++told;
                }
            committed = read_(collection);
        });
        for (int i = 0; i < steps && !testing::Test::HasFailure(); ++i) {
            std::size_t const action = below(12);
            if (action == 0 && levels_.size() < 4)
                levels_.push_back({shelf_.getModel().beginTransaction(), expected});
            else if (action == 1 && !levels_.empty())
                end(below(2) == 0);
            else
                step();
            EXPECT_EQ(read_(collection), expected) << "after step " << i;
        }
        while (!levels_.empty())
            end(false);
        EXPECT_EQ(read_(collection), expected);
        EXPECT_GT(told, 50u);
    }

  private:
    struct Level {
        Transaction transaction;
        Content before;
    };
    void end(bool isKept) {
        if (isKept) {
            levels_.back().transaction.commit();
        } else {
            levels_.back().transaction.rollback();
            expected = std::move(levels_.back().before);
        }
        levels_.pop_back();
    }

    Shelf shelf_;
    Row row_;
    Read read_;
    std::mt19937 random_;
    std::vector<Level> levels_;
};

} // namespace shop
