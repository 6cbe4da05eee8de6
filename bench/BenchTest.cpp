// What the bench itself relies on: plans are the same for one seed and of the promised shape, references lead
// back, a contender that fails is seen to fail.
#include "Changes.hpp"
#include "Contenders.hpp"
#include "FloorLoad.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace zelkor::bench {

namespace {

/// Looks at every reference of a plan's records as they come.
struct ReferenceCheck {
    unsigned types = 0;
    unsigned files = 0;
    unsigned seen = 0;
    bool sound = true;
    bool sorted = true;
    std::string_view lastPath;

    void look(TypeIndex index) { sound = sound && index.at < types; }
    void look(FileIndex index) { sound = sound && index.at < files; }

    template <class Record>
    void add(Record const& record) {
        ++seen;
        forEachFeature<Record>([&](auto const& feature) {
            constexpr Form form = formOf<decltype(feature)>;
            auto const& value = record.*(feature.member);
            if constexpr (form == Form::Reference)
                look(value);
            else if constexpr (form == Form::References)
                for (auto const index : value)
                    look(index);
            else if constexpr (form == Form::Child) {
                if (value) add(*value);
            } else if constexpr (form == Form::Children) {
                for (auto const& contained : value)
                    add(contained);
            }
        });
    }
    void project(ProjectRecord const& record) { add(record); }
    void file(FileRecord const& record) {
        add(record);
        ++files;
        sorted = sorted && lastPath < record.path;
        lastPath = record.path;
    }
    void openScope(UnitRecord const& record) { add(record); }
    void openScope(NamespaceRecord const& record) { add(record); }
    void closeScope() {}
    template <class Record>
    void symbol(Record const& record) {
        add(record);
        if constexpr (isTypeRecord<Record>) ++types;
    }
};

TEST(Plan, IsTheSameForOneSeed) {
    Plan const first(7, 5000);
    Plan const second(7, 5000);
    Plan const other(8, 5000);
    EXPECT_EQ(sumsOf(first), sumsOf(second));
    EXPECT_NE(sumsOf(first), sumsOf(other));
}

TEST(Plan, ReferencesLeadToWhatWasBuiltBefore) {
    Plan const plan(1, 20000);
    ReferenceCheck check;
    plan.replay(check);
    EXPECT_TRUE(check.sound);
    EXPECT_TRUE(check.sorted) << "files must come in the order of their paths";
    EXPECT_EQ(check.seen, plan.elements());
    EXPECT_EQ(check.files, plan.count(Kind::SourceFile));
}

TEST(Plan, HasTheSharesOfTheModel) {
    Plan const plan(1, 200000);
    EXPECT_GE(plan.elements(), 200000U);
    EXPECT_LT(plan.elements(), 200200U);
    auto const share = [&plan](std::initializer_list<Kind> kinds) {
        double sum = 0;
        for (Kind const kind : kinds)
            sum += plan.count(kind);
        return 100 * sum / plan.elements();
    };
    using enum Kind;
    double const positions = share({SourcePosition});
    double const variables = share({Variable, Member});
    double const routines = share({Function, Method});
    double const types = share({StructType, PointerType, QualifiedType, TypedefType, IntegerType});
    EXPECT_NEAR(positions, 33, 2);
    EXPECT_NEAR(variables, 26, 2);
    EXPECT_NEAR(routines, 15, 1);
    EXPECT_NEAR(types, 15, 1);
    EXPECT_NEAR(100 - positions - variables - routines - types, 11, 1.5);
    for (std::size_t kind = 0; kind < classNames.size(); ++kind)
        EXPECT_GT(plan.count(static_cast<Kind>(kind)), 0U) << classNames[kind];
}

TEST(Identity, GoesThroughText) {
    IdentitySource source(3);
    for (int round = 0; round < 100; ++round) {
        Identity const drawn = source.next();
        IdentityText const text(drawn);
        EXPECT_EQ(std::string_view(text)[14], '4');
        EXPECT_NE(std::string_view("89ab").find(std::string_view(text)[19]), std::string_view::npos);
        EXPECT_EQ(parseIdentity(text), drawn);
    }
}

TEST(Identity, RefusesOtherText) {
    for (std::string_view const text :
         {"", "00000000-0000-4000-8000-00000000000", "00000000-0000-4000-8000-0000000000000",
          "00000000-0000-4000-8000-00000000000g", "00000000+0000-4000-8000-000000000000",
          "000000000-000-4000-8000-000000000000", "0000000A-0000-4000-8000-000000000000"})
        EXPECT_FALSE(parseIdentity(text)) << text;
}

TEST(Fingerprint, SeesLettersAndNotTheirOrderOrLines) {
    EXPECT_EQ(Fingerprint::of("abc"), Fingerprint::of("ca\nb"));
    EXPECT_NE(Fingerprint::of("abc"), Fingerprint::of("abd"));
    EXPECT_NE(Fingerprint::of("ad"), Fingerprint::of("bc"));
}

TEST(Changes, AreTheSameForOneSeed) {
    auto const draw = [](std::uint64_t seed) {
        std::vector<std::string> drawn;
        changeAll(
            seed, 50, 1000, 1000,
            [&](std::size_t at, std::string const& name) { drawn.push_back(std::to_string(at) + name); },
            [&](std::size_t at, unsigned line) {
                drawn.push_back(std::to_string(at) + "/" + std::to_string(line));
            });
        return drawn;
    };
    EXPECT_EQ(draw(1).size(), 50U);
    EXPECT_EQ(draw(1), draw(1));
    EXPECT_NE(draw(1), draw(2));
}

TEST(TrackedFloor, KnowsEveryReferrer) {
    Plan const plan(1, 3000);
    floor::Model<true> model;
    floor::Builder<true> builder(model, plan.seed());
    plan.replay(builder);
    std::uint64_t incoming = 0;
    for (auto const* const node : model.created)
        incoming += node->incoming.size();
    EXPECT_EQ(model.created.size(), plan.elements());
    EXPECT_EQ(incoming, sumsOf(plan).references);
}

TEST(Loader, RefusesReferencesThatLeadNowhere) {
    floor::Model<false> model;
    floor::Loader<false> loader(model);
    auto unit = loader.create("source.CompilationUnit");
    typename floor::Tree<false>::template Counted<floor::Tree<false>::Node> const owned(unit.node);
    loader.identify(*unit.node, "00000000-0000-4000-8000-000000000001");
    loader.text(unit, unit.row("Files"), "00000000-0000-4000-8000-000000000001"); // a unit is no file
    EXPECT_THROW(loader.resolve(), std::runtime_error);
    EXPECT_THROW(unit.row("Nothing"), std::runtime_error);
    EXPECT_THROW(loader.create("Nothing"), std::runtime_error);
}

TEST(RunApart, TellsWhatHappened) {
    Plan const plan(1, 100);
    Settings settings;
    settings.sums = sumsOf(plan);
    auto const run = [&](void (*workload)(Stage&)) {
        return runApart({"test", workload}, plan, settings, Heap::Cold);
    };

    Sample const good = run([](Stage& stage) {
        stage.countUnits(10);
        stage.measure([] {});
        stage.expectSums(stage.settings.sums);
    });
    EXPECT_STREQ(good.failure, "");
    EXPECT_EQ(good.units, 10U);

    Sample const wrongSums = run([](Stage& stage) { stage.expectSums({}); });
    EXPECT_NE(std::string(wrongSums.failure).find("elements 0"), std::string::npos) << wrongSums.failure;

    Sample const wrongDocument =
        run([](Stage& stage) { stage.expectDocument("other", Fingerprint::of("wanted")); });
    EXPECT_NE(std::string(wrongDocument.failure).find("5 bytes"), std::string::npos) << wrongDocument.failure;

    Sample const crashed = run([](Stage&) { std::_Exit(3); });
    EXPECT_STREQ(crashed.failure, "ended by status 3");
}

TEST(RunApart, MeasuresMemoryThatStays) {
    Plan const plan(1, 100);
    Settings const settings;
    Sample const sample = runApart({"test",
                                    [](Stage& stage) {
                                        static std::string kept;
                                        stage.countUnits(1);
                                        stage.measureMemory([] { kept.assign(8'000'000, 'x'); });
                                    }},
                                   plan, settings, Heap::Cold);
    ASSERT_STREQ(sample.failure, "");
    EXPECT_NEAR(sample.value, 8e6, 1e5);
}

} // namespace

} // namespace zelkor::bench
