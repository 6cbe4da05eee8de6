// Search by example, its options one by one, its edges, and its calls by reflection.

#include "model/ModelSupport.hpp"
#include "search/PlainSearch.hpp"

#include "brant/zero/meta/Names.hpp"
#include "brant/zero/meta/StandardTypes.hpp"

#include <gtest/gtest.h>

using namespace testsearch;
namespace meta = brant::zero::meta;
using brant::zero::ModelElement;
using brant::zero::Value;
using brant::zero::ValueFlags;

namespace {

meta::Class const& functions() {
    return za::Function::metaClass();
}
meta::Class const& types() {
    return zt::Type::metaClass();
}
meta::Class const& symbols() {
    return za::Symbol::metaClass();
}

/// A unit with `std` (class `vector`), namespace `ns` (function `f`, class `C` with an enumeration `E`
/// inside), all but `vector` defined in a file of the user.
struct Sample : testnames::Maker {
    za::source::SourceFile user = za::source::SourceFile::create(model);
    za::source::SourceFile system = za::source::SourceFile::create(model);
    za::Scope unit = root();
    za::Namespace std = space("std", unit);
    za::Namespace ns = space("ns", unit);
    za::Function f = make<za::Function>("f", ns);
    zt::ClassType C = make<zt::ClassType>("C", ns);
    zt::EnumType E = make<zt::EnumType>("E", inside(C));
    zt::ClassType vector = make<zt::ClassType>("vector", std);

    Sample() {
        system.setIsIncludedFromSystemIncludeDir(true);
        std.setIsStd(true);
        define(f, user);
        define(C, user);
        define(E, user);
        define(vector, system);
    }

    template <class T>
    T define(T const& symbol, za::source::SourceFile const& file) {
        auto const position = za::source::SourcePosition::create(model);
        if (file) position.setFile(file);
        symbol.setDefPos(position);
        return symbol;
    }
    [[nodiscard]] std::string find(meta::Class const& wanted, FinderOptions const& options = {},
                                   std::string const& name = {}) const {
        return namesOf(search({unit, wanted, name, options}));
    }
};

FinderOptions by(NameFinderKind strategy) {
    return FinderOptions().setNameResolutionStrategy(strategy);
}
FinderOptions everywhere() {
    return FinderOptions().setIncludeStdNs(true).setIncludeSystemHeaders(true).setIncludeTemplateScope(true);
}

TEST(Search, FindsByClassAndNameAsTheOptionsSay) {
    Sample s;
    struct Case {
        char const* what;
        meta::Class wanted;
        std::string name;
        FinderOptions options;
        std::string expected;
    };
    FinderOptions const plain;
    auto const foreign = FinderOptions().setIncludeStdNs(true).setIncludeSystemHeaders(true);
    for (Case const& c : std::vector<Case>{
             {"functions", functions(), "", plain, "ns::f "},
             {"types", types(), "", plain, "ns::C ns::C::E "},
             {"the class itself", types(), "", FinderOptions().setIncludeDerivedClasses(false), ""},
             {"the class itself, not its bases", zt::ClassType::metaClass(), "",
              FinderOptions().setIncludeDerivedClasses(false), "ns::C "},
             {"not in aggregates", types(), "", FinderOptions().setIncludeAggregateScope(false), "ns::C "},
             {"qualified name", functions(), "ns::f", plain, "ns::f "},
             {"simple name for a qualified one", functions(), "f", plain, ""},
             {"simple name", functions(), "f", by(NameFinderKind::Name), "ns::f "},
             {"simple name, qualified", functions(), "ns::f", by(NameFinderKind::Name), ""},
             {"signature", functions(), "ns::f(void)", by(NameFinderKind::Signature), "ns::f "},
             {"signature, incomplete", functions(), "ns::f", by(NameFinderKind::Signature), ""},
             {"foreign symbols", types(), "", foreign, "std::vector ns::C ns::C::E "},
             {"std without system headers", types(), "", FinderOptions().setIncludeStdNs(true),
              "ns::C ns::C::E "},
             {"system headers without std", types(), "", FinderOptions().setIncludeSystemHeaders(true),
              "ns::C ns::C::E "},
             {"another class", za::Template::metaClass(), "", foreign, ""},
             {"no class of symbols", za::Namespace::metaClass(), "", foreign, ""},
             {"no class", meta::Class(), "", foreign, ""},
             {"no namespaces", symbols(), "", FinderOptions().setIncludeSubScopes(false), ""},
             {"unknown strategy", functions(), "ns::f", by(static_cast<NameFinderKind>(77)), "ns::f "},
             {"negative strategy", functions(), "f", by(static_cast<NameFinderKind>(-1)), ""},
             {"no name, signature", symbols(), "", by(NameFinderKind::Signature), "ns::f ns::C ns::C::E "},
             {"no name, simple name", symbols(), "", by(NameFinderKind::Name), "ns::f ns::C ns::C::E "},
             {"letter case", functions(), "NS::f", plain, ""},
             {"blank behind", functions(), "ns::f ", plain, ""},
             {"zero byte behind", functions(), std::string("ns::f\0", 6), plain, ""}}) {
        EXPECT_EQ(s.find(c.wanted, c.options, c.name), c.expected) << c.what;
        Question const question{s.unit, c.wanted, c.name, c.options};
        EXPECT_EQ(namesOf(plainSearch(question)), c.expected) << c.what << ", by the plain rules";
    }
}

TEST(Search, KnowsSystemHeadersByTheDefinitionOnly) {
    struct Case {
        char const* what;
        void (*change)(Sample&);
        char const* expected;
    };
    for (Case const& c : std::vector<Case>{
             {"a header of the user", [](Sample& s) { s.user.setIsInclude(true); }, "ns::f ns::C ns::C::E "},
             {"included with angle brackets",
              [](Sample& s) { s.user.setIsIncludedBySystemIncludeSyntax(true); }, "ns::f ns::C ns::C::E "},
             {"a class and all in it", [](Sample& s) { s.define(s.C, s.system); }, "ns::f "},
             {"in it alone", [](Sample& s) { s.define(s.E, s.system); }, "ns::f ns::C "},
             {"no file", [](Sample& s) { s.define(s.f, {}); }, "ns::C ns::C::E "},
             {"only declared",
              [](Sample& s) {
                  s.f.getDeclPosMutable().add(s.f.getDefPos());
                  s.f.setDefPos({});
              },
              "ns::C ns::C::E "}}) {
        Sample s;
        c.change(s);
        EXPECT_EQ(s.find(symbols()), c.expected) << c.what;
        EXPECT_EQ(s.find(symbols(), FinderOptions().setIncludeSystemHeaders(true)), "ns::f ns::C ns::C::E ")
            << c.what;
    }
}

TEST(Search, TakesAPlaceholderForWhatItSaysOfItself) {
    testnames::Maker m;
    za::Scope const unit = m.root();
    unit.getSymbolsMutable().genericAdd(m.model.createProxy(functions(), {u"", u"nowhere", nullptr}));
    EXPECT_EQ(search({unit, symbols(), "", {}}).size(), 0u);
    EXPECT_EQ(search({unit, functions(), "", everywhere()}).size(), 1u);
    EXPECT_EQ(search({unit, functions(), "x", everywhere()}).size(), 0u);
    // A scope that is not there has no contents to tell of.
    auto const space = m.model.createProxy(za::Namespace::metaClass(), {u"", u"nowhere", nullptr});
    unit.getNamespacesMutable().genericAdd(space);
    EXPECT_EQ(testmodel::failureOf([&] { (void)search({unit, symbols(), "", {}}); }), "CannotModifyProxy");
    EXPECT_EQ(search({unit, symbols(), "", everywhere().setIncludeSubScopes(false)}).size(), 1u);
}

TEST(Search, GoesAsDeepAsTheScopesDo) {
    constexpr int depth = 100000;
    Sample s;
    za::Scope spaces = s.unit;
    za::Scope classes = s.unit;
    for (int i = 0; i < depth; ++i) {
        spaces = s.space("n", spaces);
        classes = s.inside(s.define(s.make<zt::UnionType>("c", classes), s.user));
    }
    auto const bottom = s.define(s.make<za::Function>("bottom", spaces), s.user);
    auto const inner = s.define(s.make<za::Function>("inner", classes), s.user);
    EXPECT_EQ(search({s.unit, functions(), bottom.getFullyQualifiedName(), {}}),
              std::vector<za::Symbol>({bottom}));
    EXPECT_EQ(search({s.unit, functions(), inner.getFullyQualifiedName(), {}}),
              std::vector<za::Symbol>({inner}));
    EXPECT_EQ(search({s.unit, zt::UnionType::metaClass(), "", {}}).size(), std::size_t{depth});
    EXPECT_EQ(search({s.unit, symbols(), "inner", by(NameFinderKind::Name)}),
              std::vector<za::Symbol>({inner}));
}

class SearchByReflection : public testing::Test {
  protected:
    static meta::Operation operation(std::string const& name) {
        for (meta::Operation const& operation : za::Scope::metaClass().getOperations())
            if (brant::zero::toUtf8(operation.getName()) == name) return operation;
        throw std::out_of_range(name);
    }
    static Value classValue(meta::Class const& wanted) {
        return Value::own<ModelElement>(meta::Class::metaClass(), ValueFlags::One, wanted);
    }
    static Value text(std::string const& name) {
        return Value::own<std::string>(meta::requireType("StdString"), ValueFlags::One, name);
    }
    static Value optionsValue(FinderOptions const& options) {
        auto const type = meta::MetaRegistry::getInstance().getType(u"zelkor.ast.FinderOptions");
        return Value::own<FinderOptions>(type, ValueFlags::One, options);
    }
    Sample s;
};

TEST_F(SearchByReflection, GivesWhatTheTypedCallGives) {
    meta::Operation const byClass = operation("findSymbolByMetaClass");
    meta::Operation const byName = operation("findSymbolByMetaClassAndName");
    for (za::Scope const& scope : {s.unit, za::Scope(s.ns)}) {
        Value const all = scope.invoke(byClass, {classValue(types()), optionsValue({})});
        EXPECT_EQ(all.flags(), ValueFlags::Sequence);
        EXPECT_EQ(namesOf(all.getValue<std::vector<za::Symbol>>()), "ns::C ns::C::E ");
        Value const one = scope.invoke(
            byName, {classValue(functions()), text("f"), optionsValue(by(NameFinderKind::Name))});
        EXPECT_EQ(one.getValue<std::vector<za::Symbol>>(), std::vector<za::Symbol>({s.f}));
        Value const none = scope.invoke(byName, {classValue(functions()), text("f"), optionsValue({})});
        EXPECT_EQ(none.getValue<std::vector<za::Symbol>>().size(), 0u);
    }
}

} // namespace
