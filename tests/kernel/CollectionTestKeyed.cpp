// Maps and sets of elements, and the placeholders that they keep beside their members.

#include "CollectionSupport.hpp"
#include "brant/zero/Text.hpp"

#include <map>
#include <random>
#include <set>

namespace shop {
namespace {

class KeyedTest : public testing::Test {
  protected:
    Item item(std::u16string const& name) { return Item::create(model, name); }
    std::vector<std::u16string> keys() {
        std::vector<std::u16string> result;
        for (Value const& key : catalog.genericKeys())
            result.push_back(key.getValue<std::u16string>());
        return result;
    }

    Model model = createModel();
    Shelf shelf = Shelf::create(model);
    ElementMap<std::u16string, Item>& catalog = shelf->catalog;
};

static_assert(std::ranges::bidirectional_range<ElementMap<std::u16string, Item> const>);
static_assert(
    sizeof(InlineCollection<ElementMap<std::u16string, Item>, Shelf::Impl::table, Shelf::Catalog>) ==
    2 * sizeof(void*));

TEST_F(KeyedTest, AMapOwnsItsMembersAndFindsThemByKey) {
    Item const b = item(u"b");
    catalog.insert(b);
    catalog.add(item(u"a"));
    EXPECT_EQ(namesOf(catalog), Names({u"a", u"b"}));
    EXPECT_EQ(catalog.keys(), Names({u"a", u"b"}));
    EXPECT_EQ(keys(), Names({u"a", u"b"}));
    EXPECT_EQ(catalog[u"b"], b);
    EXPECT_EQ(catalog.begin()->getName(), u"a");
    EXPECT_EQ(b.container(), shelf);
    EXPECT_EQ(b.containmentFeature(), Shelf::property(Shelf::Catalog));
    EXPECT_TRUE(catalog.contains(b));
    EXPECT_TRUE(catalog.contains(u"a"));
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(KeyedTest, LookingForAnAbsentKeyMakesNoEntry) {
    EXPECT_EQ(catalog[u"nothing"], nullptr);
    EXPECT_FALSE(catalog.contains(u"nothing"));
    EXPECT_FALSE(catalog.erase(u"nothing"));
    EXPECT_EQ(catalog.size(), 0u);
}

TEST_F(KeyedTest, KeysStandInCodeUnitOrder) {
    // A surrogate pair comes before U+FFxx as code units, though not as characters.
    for (char16_t const* name : {u"\uFF21", u"b", u"\U0001F600", u"", u"B"})
        catalog.insert(item(name));
    EXPECT_EQ(catalog.keys(), Names({u"", u"B", u"b", u"\U0001F600", u"\uFF21"}));
}

TEST_F(KeyedTest, CollisionsAreReportedKeptOrReplaced) {
    Item const old = item(u"k");
    Item const fresh = item(u"k");
    catalog.insert(old);
    catalog.insert(old, CollisionResolution::Report);

    expectReport<m::UniquenessConstraint>([&] { catalog.insert(fresh); });
    expectReport<m::UniquenessConstraint>([&] { catalog.genericAdd(fresh); });
    expectReport<m::UniquenessConstraint>([&] { catalog.genericEnsureAt(fresh, 0); });
    catalog.insert(fresh, CollisionResolution::Keep);
    EXPECT_EQ(catalog[u"k"], old);
    EXPECT_EQ(fresh.container(), nullptr);

    auto transaction = model.beginTransaction();
    catalog.insert(fresh, CollisionResolution::Replace);
    EXPECT_EQ(catalog[u"k"], fresh);
    EXPECT_EQ(fresh.container(), shelf);
    EXPECT_EQ(old.container(), nullptr);
    EXPECT_EQ(catalog.size(), 1u);
    transaction.rollback();
    EXPECT_EQ(catalog[u"k"], old);
    EXPECT_EQ(old.container(), shelf);
    EXPECT_EQ(fresh.container(), nullptr);
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(KeyedTest, OnlyTheVeryElementIsRemoved) {
    Item const member = item(u"k");
    Item const twin = item(u"k");
    catalog.insert(member);
    catalog.genericRemove(twin);
    catalog.remove(twin);
    EXPECT_FALSE(catalog.contains(twin));
    EXPECT_EQ(catalog.size(), 1u);
    catalog.genericRemove(member);
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(member.container(), nullptr);
    catalog.insert(twin);
    EXPECT_TRUE(catalog.erase(u"k"));
    EXPECT_EQ(twin.container(), nullptr);
}

TEST_F(KeyedTest, ChangingTheKeyPropertyLeavesTheEntryUntilItIsPutAgain) {
    Item const a = item(u"a");
    catalog.insert(a);
    a.setName(u"z");
    EXPECT_EQ(catalog[u"a"], a);
    EXPECT_EQ(catalog[u"z"], nullptr);
    catalog.insert(a);
    EXPECT_EQ(catalog.keys(), Names({u"z"}));
    a.setName(u"y");
    // Leaving for another holder works under whatever key.
    shelf->items.add(a);
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(a.containmentFeature(), Shelf::property(Shelf::Items));
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(KeyedTest, ReflectionChecksClassesAndKeys) {
    Item const a = item(u"a");
    catalog.insert(a);
    expectReport<m::CannotAddIncompatibleTypes>([&] { catalog.genericAdd(shelf); });
    expectReport<m::CannotAddIncompatibleTypes>([&] { catalog.genericRemove(shelf); });
    EXPECT_FALSE(catalog.genericContains(shelf));
    EXPECT_TRUE(catalog.isMapInterface());
    EXPECT_FALSE(catalog.isSequenceInterface());
    meta::Type const text = catalog.getQualifierType();
    EXPECT_EQ(catalog.genericGet(Value::own<std::u16string>(text, ValueFlags::One, u"a")), a);
    EXPECT_EQ(catalog.genericGet(Value::own<std::u16string>(text, ValueFlags::One, u"b")), nullptr);
    meta::Type const number = meta::requireType("Integer");
    expectReport<m::CannotCastIncompatibleTypes>(
        [&] { (void)catalog.genericGet(Value::own<int>(number, ValueFlags::One, 1)); });
    catalog.genericAdd(Item());
    EXPECT_EQ(catalog.size(), 1u);
}

TEST_F(KeyedTest, BothClearsOfAMapLetTheMembersGo) {
    for (bool basic : {false, true}) {
        Item const a = item(u"a");
        catalog.insert(a);
        catalog.addProxy(createProxy(model, generateUuid()));
        auto transaction = model.beginTransaction();
        if (basic)
            catalog.genericBasicClear();
        else
            catalog.genericClear();
        EXPECT_TRUE(catalog.empty());
        EXPECT_TRUE(catalog.getAllValuesAndProxies().empty());
        EXPECT_EQ(a.container(), nullptr);
        transaction.rollback();
        EXPECT_EQ(catalog.getAllValuesAndProxies().size(), 2u);
        EXPECT_EQ(a.container(), shelf);
        catalog.clear();
    }
}

TEST_F(KeyedTest, DestroyingAMemberFreesItsKey) {
    Item const a = item(u"a");
    catalog.insert(a);
    auto transaction = model.beginTransaction();
    a.destroy();
    EXPECT_TRUE(catalog.empty());
    catalog.insert(item(u"a"));
    transaction.rollback();
    EXPECT_EQ(catalog[u"a"], a);
    EXPECT_TRUE(a);
    EXPECT_EQ(catalog.size(), 1u);
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(KeyedTest, PlaceholdersOfAMapJoinUnderTheirTargetsKey) {
    boost::uuids::uuid const here = generateUuid();
    boost::uuids::uuid const twin = generateUuid();
    catalog.add(createProxy(model, here));
    catalog.add(createProxy(model, here));
    catalog.add(createProxy(model, twin));
    EXPECT_EQ(catalog.size(), 0u);
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(catalog.getAllValuesAndProxies().size(), 2u);
    catalog.resolveAll();
    EXPECT_EQ(catalog.size(), 0u);
    Item::create(model, u"same", here);
    Item::create(model, u"same", twin);
    EXPECT_TRUE(catalog.getAllValues().empty());
    catalog.resolveAll();
    // Two targets with one key: one joins, the other one stays away.
    EXPECT_EQ(catalog.keys(), Names({u"same"}));
    EXPECT_EQ(catalog.getAllValuesAndProxies().size(), 2u);
}

TEST_F(KeyedTest, ExternalPlaceholdersStayOutsideWhatOwns) {
    Item const external = createProxy(model, generateUuid(), true);
    expectReport<m::CannotCreateCrossModelAssociation>([&] { catalog.addProxy(external); });
    EXPECT_TRUE(catalog.getAllValuesAndProxies().empty());
    Standalone<UnorderedElementSet<Item>> set(shelf.get(), Shelf::Impl::rows[Shelf::Links]);
    set.addProxy(external);
    set.resolveLocal();
    set.resolveAll();
    EXPECT_EQ(set.getAllValuesAndProxies().size(), 1u);
}

TEST_F(KeyedTest, ATargetThatBelongsElsewhereJoinsOnlyWhenNobodyAsksIt) {
    meta::Enum const type = meta::Enum::create(model);
    meta::EnumLiteral const literal = meta::EnumLiteral::create(model);
    literal.setName(u"a");
    auto& literals = type.getLiteralsMutable();
    ProxyId const id{u"", toUtf16(toString(literal.uuid())).value(), nullptr};
    literals.addProxy(model.createProxy(meta::EnumLiteral::metaClass(), id));
    literals.addProxy(model.createProxy(meta::EnumLiteral::metaClass(), id)); // the same once more
    EXPECT_EQ(literals.getAllValuesAndProxies().size(), 1u);
    literals.resolveAll();
    EXPECT_EQ(literals.genericSize(), 0u); // its other end denies it
    literals.resolveLocal();
    EXPECT_EQ(literals.genericSize(), 1u);
    EXPECT_EQ(literals.getAllValuesAndProxies().size(), 1u);
}

TEST_F(KeyedTest, WithoutAnOwnerEveryOperationWorksAndTellsNobody) {
    Item const a = item(u"a");
    Item const twin = item(u"a");
    int commits = 0;
    auto const subscription = model.onCommit([&](CommitNotice const&) { ++commits; });
    Standalone<ElementMap<std::u16string, Item>> alone(nullptr, Shelf::Impl::rows[Shelf::Catalog]);
    alone.insert(a);
    alone.insert(twin, CollisionResolution::Replace);
    alone.addProxy(createProxy(model, a.uuid()));
    alone.resolveAll();
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&alone, a));
    EXPECT_EQ(alone[u"a"], twin);
    EXPECT_EQ(alone.getAllValuesAndProxies().size(), 2u);
    alone.genericRemove(twin);
    EXPECT_TRUE(alone.empty());
    alone.genericClear();
    EXPECT_TRUE(alone.getAllValuesAndProxies().empty());
    EXPECT_EQ(commits, 0);
    EXPECT_EQ(twin.container(), nullptr);
}

TEST_F(KeyedTest, AResolvedPlaceholderGoesWhenItsAddingIsAbandoned) {
    Item const a = item(u"a");
    auto transaction = model.beginTransaction();
    catalog.addProxy(createProxy(model, a.uuid()));
    catalog.resolveAll();
    EXPECT_EQ(namesOf(catalog), Names({u"a"}));
    transaction.rollback();
    EXPECT_TRUE(catalog.empty());
    EXPECT_TRUE(catalog.getAllValuesAndProxies().empty());
}

TEST_F(KeyedTest, ATargetThatVanishesGivesThePlaceholderBack) {
    boost::uuids::uuid const target = generateUuid();
    Item const proxy = createProxy(model, target);
    catalog.addProxy(proxy);
    auto transaction = model.beginTransaction();
    Item::create(model, u"a", target);
    catalog.resolveAll();
    EXPECT_EQ(namesOf(catalog), Names({u"a"}));
    transaction.rollback();
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(catalog.getAllValuesAndProxies(), std::vector<ModelElement>({proxy}));
}

TEST_F(KeyedTest, ReplacingAPlaceholderGivesTheElementItsHolder) {
    Item const a = item(u"a");
    catalog.addProxy(createProxy(model, a.uuid()));
    catalog.replaceProxy(a, 0);
    EXPECT_EQ(namesOf(catalog), Names({u"a"}));
    EXPECT_EQ(a.container(), shelf);
    EXPECT_EQ(catalog.getAllValuesAndProxies().size(), 1u);
    catalog.addProxy(createProxy(model, a.uuid()));
    catalog.replaceProxy(a, 0);
    // It is a member already, so the entry of the placeholder is left over.
    EXPECT_EQ(catalog.getAllValuesAndProxies().size(), 2u);
    EXPECT_FALSE(model.verify().has_value());
}

TEST_F(KeyedTest, TheRestoringFormsTellNobodyButAreTakenBack) {
    Item const a = item(u"a");
    Item const twin = item(u"a");
    auto transaction = model.beginTransaction();
    shelf.get()->_basicAdd(&catalog, a);
    shelf.get()->_basicAdd(&catalog, twin);
    EXPECT_EQ(catalog[u"a"], a);
    EXPECT_EQ(a.container(), nullptr);
    shelf.get()->_basicRemove(&catalog, twin);
    EXPECT_EQ(catalog.size(), 1u);
    transaction.rollback();
    EXPECT_TRUE(catalog.empty());

    catalog.insert(a);
    auto second = model.beginTransaction();
    shelf.get()->_basicRemove(&catalog, a);
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(a.container(), shelf);
    Standalone<ElementMap<std::u16string, Item>> saved(nullptr, Shelf::Impl::rows[Shelf::Catalog]);
    saved.insert(twin);
    shelf.get()->_basicCopyValues(&catalog, &saved);
    EXPECT_EQ(catalog[u"a"], twin);
    EXPECT_EQ(twin.container(), nullptr);
    second.rollback();
    EXPECT_EQ(catalog[u"a"], a);
}

TEST_F(KeyedTest, AskingForAPlaceholderToAnElementTakesTheElementIn) {
    Item const a = item(u"a");
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&catalog, a));
    catalog.addProxy(createProxy(model, generateUuid()));
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&catalog, a));
    catalog.addProxy(createProxy(model, a.uuid()));
    EXPECT_TRUE(shelf.get()->_basicContainsProxyTo(&catalog, a));
    EXPECT_EQ(namesOf(catalog), Names({u"a"}));
    EXPECT_EQ(catalog.getAllValuesAndProxies().size(), 2u);
}

TEST_F(KeyedTest, ASetHoldsEachElementOnce) {
    Standalone<UnorderedElementSet<Item>> set(shelf.get(), Shelf::Impl::rows[Shelf::Links]);
    Item const a = item(u"a");
    Item const b = item(u"b");
    set.add(a);
    set.add(a);
    set.genericAdd(b);
    set.add(Item());
    EXPECT_EQ(set.size(), 2u);
    EXPECT_TRUE(set.contains(a));
    std::set<std::u16string> names;
    for (Item const& each : set)
        names.insert(each.getName());
    EXPECT_EQ(names, std::set<std::u16string>({u"a", u"b"}));
    expectReport<m::CannotAddIncompatibleTypes>([&] { set.genericAdd(shelf); });
    Model const other = createModel();
    expectReport<m::CannotCreateCrossModelAssociation>([&] { set.add(Item::create(other)); });
    a.destroy();
    set.remove(a);
    EXPECT_EQ(set.size(), 1u);
    set.clear();
    EXPECT_TRUE(set.empty());
    EXPECT_EQ(b.container(), nullptr);
}

TEST_F(KeyedTest, PlaceholdersOfASetDoNotCount) {
    Standalone<UnorderedElementSet<Item>> set(shelf.get(), Shelf::Impl::rows[Shelf::Links]);
    Item const a = item(u"a");
    Item const proxy = createProxy(model, a.uuid());
    set.add(proxy);
    EXPECT_TRUE(set.empty());
    EXPECT_EQ(set.genericSize(), 0u);
    EXPECT_FALSE(set.genericContains(proxy));
    EXPECT_EQ(set.getAllValuesAndProxies().size(), 1u);
    set.genericBasicClear();
    EXPECT_EQ(set.getAllValuesAndProxies().size(), 1u);
    set.resolveLocal();
    EXPECT_EQ(namesOf(set), Names({u"a"}));
    set.add(createProxy(model, generateUuid()));
    set.genericClear();
    EXPECT_TRUE(set.getAllValuesAndProxies().empty());
    set.add(proxy);
    set.remove(proxy);
    EXPECT_TRUE(set.getAllValuesAndProxies().empty());
}

TEST_F(KeyedTest, TheFactoryOfATypeChoosesTheKindByTheProperty) {
    meta::CollectionFactory const& factory =
        meta::MetaRegistry::getInstance().collectionFactory(Item::metaClass());
    ASSERT_TRUE(factory);
    for (auto const& [row, ordered] : {std::pair(Shelf::Links, true), std::pair(Shelf::Gadgets, false)}) {
        std::unique_ptr<AbstractOwnedCollection> const made = factory(shelf.get(), Shelf::property(row));
        ASSERT_NE(made->asReferences(), nullptr);
        EXPECT_EQ(made->asReferences()->isSequenceInterface(), ordered);
        made->asReferences()->genericAdd(Gadget::create(model));
        EXPECT_EQ(made->asReferences()->genericSize(), 1u);
    }
    EXPECT_TRUE(shelf->links.empty());
}

TEST_F(KeyedTest, HashesOfPlaceholderIdsIgnoreTheExternalPart) {
    ProxyId const id{u"model", u"element", nullptr};
    ProxyId external = id;
    external.external = std::make_shared<std::u16string>(u"x");
    EXPECT_EQ(std::hash<ProxyId>()(id), std::hash<ProxyId>()(external));
    EXPECT_FALSE(id == external);
    EXPECT_NE(std::hash<ProxyId>()(id), std::hash<ProxyId>()(ProxyId{u"element", u"model", nullptr}));
}

/// What a shelf's catalogue holds, by key.
using Content = std::map<std::u16string, Item>;

Content contentOf(ReferenceMap const& map) {
    Content content;
    for (auto const& [key, element] : map.entries())
        content.emplace(key, Item(element.get()));
    return content;
}

TEST_F(KeyedTest, AgreesWithAMapAcrossRollbacks) {
    std::vector<Item> pool;
    for (int i = 0; i < 30; ++i)
        pool.push_back(item(std::u16string(1, static_cast<char16_t>(u'a' + i % 12))));
    Content expected;
    OpenLevels<Content> levels(model);
    std::mt19937 random(7);
    auto below = [&random](std::size_t bound) { return random() % bound; };
    for (int step = 0; step < 4000; ++step) {
        Item const& picked = pool[below(pool.size())];
        std::u16string const key = picked.getName();
        bool const member = expected.count(key) != 0 && expected[key] == picked;
        switch (below(8)) {
        case 0:
            if (expected.count(key) != 0 && !member) {
                expectReport<m::UniquenessConstraint>([&] { catalog.insert(picked); });
                break;
            }
            [[fallthrough]];
        case 1:
            catalog.insert(picked, CollisionResolution::Keep);
            expected.emplace(key, picked);
            break;
        case 2:
            catalog.insert(picked, CollisionResolution::Replace);
            expected[key] = picked;
            break;
        case 3:
            catalog.remove(picked);
            if (member) expected.erase(key);
            break;
        case 4:
            EXPECT_EQ(catalog.erase(key), expected.erase(key) != 0);
            break;
        case 5:
            if (below(40) == 0) {
                catalog.clear();
                expected.clear();
            }
            break;
        case 6:
            levels.begin(expected);
            break;
        default:
            levels.end(below(2) == 0, expected);
        }
        ASSERT_EQ(contentOf(catalog), expected) << "after step " << step;
    }
    levels.abandonAll();
    if (auto const violation = model.verify()) ADD_FAILURE() << violation->rule << ": " << violation->detail;
}

TEST_F(KeyedTest, CommitsReportTheOldContent) {
    Item const a = item(u"a");
    Item const b = item(u"b");
    catalog.insert(a);
    catalog.insert(b);
    Content const before = contentOf(catalog);
    int notices = 0;
    auto const subscription = model.onCommit([&](CommitNotice const& notice) {
        for (ElementChange const& change : notice.changed) {
            if (change.element() != shelf) continue;
            ++notices;
            Value const old = change.oldValue(Shelf::property(Shelf::Catalog));
            ASSERT_NE(old.collection(), nullptr);
            EXPECT_EQ(contentOf(static_cast<ReferenceMap const&>(*old.collection())), before);
        }
    });
    auto transaction = model.beginTransaction();
    catalog.insert(item(u"a"), CollisionResolution::Replace);
    catalog.insert(item(u"c"));
    catalog.erase(u"b");
    catalog.clear();
    catalog.insert(item(u"d"));
    catalog.addProxy(createProxy(model, generateUuid()));
    transaction.commit();
    EXPECT_EQ(notices, 1);
}

} // namespace
} // namespace shop
