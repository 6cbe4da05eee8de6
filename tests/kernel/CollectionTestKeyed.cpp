// Maps and sets of elements, and the placeholders that they keep beside their members.

#include "brant/zero/Text.hpp"
#include "kernel/CollectionSupport.hpp"

#include <map>
#include <set>

namespace shop {
namespace {

class KeyedTest : public CollectionTest {
  protected:
    std::size_t members() { return catalog.getAllValuesAndProxies().size(); }
};

using Catalogue = ElementMap<std::u16string, Item>;
static_assert(std::ranges::bidirectional_range<Catalogue const>);
static_assert(sizeof(InlineCollection<Catalogue, Shelf::Impl::table, Catalog>) == 2 * sizeof(void*));

TEST_F(KeyedTest, AgreesWithAMapAcrossRollbacks) {
    using Content = std::map<std::u16string, Item>;
    std::vector<Item> pool;
    for (int i = 0; i < 30; ++i)
        pool.push_back(item(std::u16string(1, static_cast<char16_t>(u'a' + i % 12))));
    Walk<Content> walk(shelf, Catalog, 7, [](AbstractOwnedCollection const& map) {
        Content content;
        for (auto const& [key, element] : static_cast<ReferenceMap const&>(map).entries())
            content.emplace(key, Item(element.get()));
        return content;
    });
    walk.run(4000, [&] {
        Content& expected = walk.expected;
        Item const& picked = pool[walk.below(pool.size())];
        std::u16string const key = picked.getName();
        bool const member = expected.count(key) != 0 && expected[key] == picked;
        switch (walk.below(6)) {
        case 0:
            if (expected.count(key) != 0 && !member) {
                expectReport<m::UniquenessConstraint>([&] { catalog.insert(picked); });
                expectReport<m::UniquenessConstraint>([&] { catalog.genericAdd(picked); });
                expectReport<m::UniquenessConstraint>([&] { catalog.genericEnsureAt(picked, 0); });
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
        case 3: // only the very element is removed
            if (walk.below(2) == 0)
                catalog.remove(picked);
            else
                catalog.genericRemove(picked);
            if (member) expected.erase(key);
            break;
        case 4:
            EXPECT_EQ(catalog.erase(key), expected.erase(key) != 0);
            break;
        default:
            if (walk.below(30) != 0) break;
            catalog.clear();
            expected.clear();
        }
        auto const found = expected.find(key);
        EXPECT_EQ(catalog[key], found == expected.end() ? Item() : found->second);
        EXPECT_EQ(catalog.contains(key), found != expected.end());
        EXPECT_EQ(catalog.contains(picked), found != expected.end() && found->second == picked);
        EXPECT_EQ(picked.container(), catalog.contains(picked) ? shelf : ModelElement());
        EXPECT_EQ(catalog.size(), expected.size());
    });
    expectSound();
}

TEST_F(KeyedTest, KeysStandInCodeUnitOrder) {
    // A surrogate pair comes before U+FFxx as code units, though not as characters.
    for (char16_t const* name : {u"\uFF21", u"b", u"\U0001F600", u"", u"B"})
        catalog.insert(item(name));
    Names const expected = {u"", u"B", u"b", u"\U0001F600", u"\uFF21"};
    EXPECT_EQ(catalog.keys(), expected);
    EXPECT_EQ(namesOf(catalog), expected);
    EXPECT_EQ(catalog.begin()->getName(), u"");
    EXPECT_EQ(catalog.genericKeys()[1].getValue<std::u16string>(), u"B");
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
    // Leaving for another holder works under whatever key, and so does the end of the element.
    auto transaction = model.beginTransaction();
    items.add(a);
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(a.containmentFeature(), propertyOf(Items));
    expectSound();
    transaction.rollback();
    a.destroy();
    EXPECT_TRUE(catalog.empty());
    expectSound();
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
    for (bool const basic : {false, true}) {
        Item const a = item(u"a");
        catalog.insert(a);
        catalog.addProxy(proxy(generateUuid()));
        auto transaction = model.beginTransaction();
        basic ? catalog.genericBasicClear() : catalog.genericClear();
        EXPECT_TRUE(catalog.empty());
        EXPECT_EQ(members(), 0u);
        EXPECT_EQ(a.container(), nullptr);
        transaction.rollback();
        EXPECT_EQ(members(), 2u);
        EXPECT_EQ(a.container(), shelf);
        catalog.clear();
    }
}

TEST_F(KeyedTest, PlaceholdersOfAMapJoinUnderTheirTargetsKey) {
    boost::uuids::uuid const here = generateUuid();
    boost::uuids::uuid const twin = generateUuid();
    for (boost::uuids::uuid const& id : {here, here, twin})
        catalog.add(proxy(id));
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(members(), 2u);
    catalog.resolveAll();
    EXPECT_EQ(catalog.size(), 0u);
    item(u"same", here);
    item(u"same", twin);
    EXPECT_TRUE(catalog.getAllValues().empty());
    catalog.resolveAll();
    // Two targets with one key: one joins, the other one stays away.
    EXPECT_EQ(catalog.keys(), Names({u"same"}));
    EXPECT_EQ(members(), 2u);
}

TEST_F(KeyedTest, ExternalPlaceholdersStayOutsideWhatOwns) {
    Item const external = proxy(generateUuid(), true);
    expectReport<m::CannotCreateCrossModelAssociation>([&] { catalog.addProxy(external); });
    EXPECT_EQ(members(), 0u);
    Standalone<UnorderedElementSet<Item>> set(shelf.get(), rowOf(Links));
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
    auto const made = std::pair(item(u"a"), item(u"a"));
    int commits = 0;
    auto const subscription = model.onCommit([&](CommitNotice const&) { ++commits; });
    Standalone<Catalogue> alone(nullptr, rowOf(Catalog));
    alone.insert(made.first);
    alone.insert(made.second, CollisionResolution::Replace);
    alone.addProxy(proxy(made.first.uuid()));
    alone.resolveAll();
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&alone, made.first));
    EXPECT_EQ(alone[u"a"], made.second);
    EXPECT_EQ(alone.getAllValuesAndProxies().size(), 2u);
    alone.genericRemove(made.second);
    EXPECT_TRUE(alone.empty());
    alone.genericClear();
    EXPECT_TRUE(alone.getAllValuesAndProxies().empty());
    EXPECT_EQ(commits, 0);
    EXPECT_EQ(made.second.container(), nullptr);
}

TEST_F(KeyedTest, WhatAResolvedPlaceholderBecameIsTakenBackWithItsReason) {
    Item const a = item(u"a");
    auto adding = model.beginTransaction();
    catalog.addProxy(proxy(a.uuid()));
    catalog.resolveAll();
    EXPECT_EQ(namesOf(catalog), Names({u"a"}));
    adding.rollback();
    EXPECT_EQ(members(), 0u);

    boost::uuids::uuid const target = generateUuid();
    Item const placeholder = proxy(target);
    catalog.addProxy(placeholder);
    auto making = model.beginTransaction();
    item(u"b", target);
    catalog.resolveAll();
    EXPECT_EQ(namesOf(catalog), Names({u"b"}));
    making.rollback();
    EXPECT_TRUE(catalog.empty());
    EXPECT_EQ(catalog.getAllValuesAndProxies(), std::vector<ModelElement>({placeholder}));
}

TEST_F(KeyedTest, ReplacingAPlaceholderGivesTheElementItsHolder) {
    Item const a = item(u"a");
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&catalog, a));
    catalog.addProxy(proxy(a.uuid()));
    catalog.replaceProxy(a, 0);
    EXPECT_EQ(namesOf(catalog), Names({u"a"}));
    EXPECT_EQ(a.container(), shelf);
    EXPECT_EQ(members(), 1u);
    catalog.addProxy(proxy(a.uuid()));
    catalog.replaceProxy(a, 0);
    EXPECT_EQ(members(), 2u) << "it is a member already, so the entry of the placeholder is left over";
    expectSound();
    // Asking for a placeholder to an element takes the element in.
    Item const b = item(u"b");
    EXPECT_FALSE(shelf.get()->_basicContainsProxyTo(&catalog, b));
    catalog.addProxy(proxy(b.uuid()));
    EXPECT_TRUE(shelf.get()->_basicContainsProxyTo(&catalog, b));
    EXPECT_EQ(namesOf(catalog), Names({u"a", u"b"}));
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
    Standalone<Catalogue> saved(nullptr, rowOf(Catalog));
    saved.insert(twin);
    shelf.get()->_basicCopyValues(&catalog, &saved);
    EXPECT_EQ(catalog[u"a"], twin);
    EXPECT_EQ(twin.container(), nullptr);
    second.rollback();
    EXPECT_EQ(catalog[u"a"], a);
}

TEST_F(KeyedTest, ASetHoldsEachElementOnce) {
    Standalone<UnorderedElementSet<Item>> set(shelf.get(), rowOf(Links));
    Item const a = item(u"a");
    Item const b = item(u"b");
    for (Item const& each : {a, a, Item()})
        set.add(each);
    set.genericAdd(b);
    Names names = namesOf(set);
    EXPECT_EQ(std::set(names.begin(), names.end()), std::set<std::u16string>({u"a", u"b"}));
    EXPECT_EQ(set.size(), 2u);
    EXPECT_TRUE(set.contains(a));
    expectReport<m::CannotAddIncompatibleTypes>([&] { set.genericAdd(shelf); });
    Model const other = Model::create({}, {}, DefaultWorkQueueFactory());
    expectReport<m::CannotCreateCrossModelAssociation>([&] { set.add(Item::create(other)); });
    a.destroy();
    set.remove(a);
    EXPECT_EQ(set.size(), 1u);
    set.clear();
    EXPECT_TRUE(set.empty());
    EXPECT_EQ(b.container(), nullptr);
}

TEST_F(KeyedTest, PlaceholdersOfASetDoNotCount) {
    Standalone<UnorderedElementSet<Item>> set(shelf.get(), rowOf(Links));
    Item const placeholder = proxy(item(u"a").uuid());
    set.add(placeholder);
    EXPECT_TRUE(set.empty());
    EXPECT_EQ(set.genericSize(), 0u);
    EXPECT_FALSE(set.genericContains(placeholder));
    set.genericBasicClear();
    EXPECT_EQ(set.getAllValuesAndProxies().size(), 1u);
    set.resolveLocal();
    EXPECT_EQ(namesOf(set), Names({u"a"}));
    set.add(proxy(generateUuid()));
    set.genericClear();
    EXPECT_TRUE(set.getAllValuesAndProxies().empty());
    set.add(placeholder);
    set.remove(placeholder);
    EXPECT_TRUE(set.getAllValuesAndProxies().empty());
}

TEST_F(KeyedTest, TheFactoryOfATypeChoosesTheKindByTheProperty) {
    meta::CollectionFactory const& factory =
        meta::MetaRegistry::getInstance().collectionFactory(Item::metaClass());
    for (auto const& [row, ordered] : {std::pair(Links, true), std::pair(Gadgets, false)}) {
        std::unique_ptr<AbstractOwnedCollection> const made = factory(shelf.get(), propertyOf(row));
        ASSERT_NE(made->asReferences(), nullptr);
        EXPECT_EQ(made->asReferences()->isSequenceInterface(), ordered);
        made->asReferences()->genericAdd(item(u"G"));
        EXPECT_EQ(made->asReferences()->genericSize(), 1u);
    }
    EXPECT_TRUE(links.empty());
}

TEST_F(KeyedTest, HashesOfPlaceholderIdsIgnoreTheExternalPart) {
    ProxyId const id{u"model", u"element", nullptr};
    ProxyId external = id;
    external.external = std::make_shared<std::u16string>(u"x");
    EXPECT_EQ(std::hash<ProxyId>()(id), std::hash<ProxyId>()(external));
    EXPECT_FALSE(id == external);
    EXPECT_NE(std::hash<ProxyId>()(id), std::hash<ProxyId>()(ProxyId{u"element", u"model", nullptr}));
}

} // namespace
} // namespace shop
