// Search against the plain rules, on random models; and whether the comparison would find a mistake.

#include "model/ModelSupport.hpp"
#include "names/RandomModel.hpp"
#include "search/PlainSearch.hpp"

#include "brant/zero/Core.hpp"

#include <gtest/gtest.h>

#include <set>

using namespace testsearch;
using testnames::RandomModel;

namespace {

/// Names that look like parts of other names.
std::vector<std::string> const trickyNames = {
    "a",          "Foo",  "bar",      "",        "operator<", "operator>", "operator->", "operator>>=",
    "operator()", "a::b", "Foo<int>", "x>",      ">",         "::",        ":",          "#unnamed#",
    "std",        "ba",   "r",        "f(void)", "int",       "T",         "aa",         "Foo::a"};

/// A random model whose symbols lie in files, some of them in no file or a system header, and whose scopes
/// hold placeholders.
class SearchedModel : public RandomModel {
  public:
    explicit SearchedModel(std::uint32_t seed) : RandomModel(seed, 24, trickyNames) {
        for (za::source::SourceFile& file : files_)
            file = za::source::SourceFile::create(m.model);
        files_[1].setIsInclude(true);
        files_[2].setIsIncludedFromSystemIncludeDir(true);
        for (za::Symbol const& symbol : symbols()) {
            if (chance(75)) symbol.setDefPos(position());
            if (chance(20)) symbol.getDeclPosMutable().add(position());
        }
        for (za::Scope const& scope : scopes()) {
            if (auto const space = za::Namespace::cast(scope); space && chance(20)) space.setIsStd(true);
            if (chance(10)) scope.getSymbolsMutable().genericAdd(placeholder());
        }
    }

    Question question() {
        static std::vector<brant::zero::meta::Class> const classes = {
            za::Symbol::metaClass(),        za::Symbol::metaClass(),      za::Symbol::metaClass(),
            za::Function::metaClass(),      zt::Method::metaClass(),      za::Variable::metaClass(),
            za::Template::metaClass(),      zt::Type::metaClass(),        zt::ClassType::metaClass(),
            zt::AggregateType::metaClass(), zt::TypedefType::metaClass(), zt::EnumType::metaClass(),
            za::Namespace::metaClass()};
        Question question;
        question.start = chance(75) ? scopes().front() : pick(scopes());
        za::Symbol const symbol = pick(symbols());
        question.wanted = chance(40) ? symbol.getMetaClass() : pick(classes);
        FinderOptions& options = question.options;
        unsigned const likely = chance(50) ? 50 : 80; // every combination often, what finds more more often
        options.setIncludeSubScopes(chance(likely)).setIncludeDerivedClasses(chance(likely));
        options.setIncludeStdNs(chance(50)).setIncludeSystemHeaders(chance(likely));
        options.setIncludeTemplateScope(chance(likely)).setIncludeAggregateScope(chance(likely));
        int const strategy = chance(5) ? -7 : static_cast<int>(below(4));
        options.setNameResolutionStrategy(static_cast<NameFinderKind>(strategy));
        if (!chance(15)) question.name = nearly(nameFor(symbol, options.getNameResolutionStrategy()));
        return question;
    }

  private:
    za::source::SourcePosition position() {
        auto const made = za::source::SourcePosition::create(m.model);
        if (chance(90)) made.setFile(files_[chance(25) ? 2 : below(2)]);
        return made;
    }
    /// Stands for nothing, or for a symbol that lies elsewhere.
    brant::zero::ModelElement placeholder() {
        std::u16string target = u"nowhere";
        if (chance(60)) target = brant::zero::toUtf16(pick(symbols())->identifier()).value();
        return m.model.createProxy(za::Function::metaClass(), {u"", target, nullptr});
    }
    /// The name, and one time in four another that differs little from it.
    std::string nearly(std::string name) {
        if (chance(75) || name.empty()) return name;
        std::size_t const at = below(static_cast<unsigned>(name.size()));
        switch (below(6)) {
        case 0:
            return name.substr(1);
        case 1:
            name.pop_back();
            return name;
        case 2:
            return name + (chance(50) ? ">" : " ");
        case 3:
            return (chance(50) ? "::" : "a::") + name;
        case 4:
            name[at] = name[at] == ':' ? '<' : ':';
            return name;
        default:
            return name.substr(at);
        }
    }

    za::source::SourceFile files_[3];
};

struct Answer {
    std::vector<za::Symbol> symbols;
    std::string failure; ///< the signature of a placeholder cannot be told, by either way

    friend bool operator==(Answer const&, Answer const&) = default;
};

template <class Ask>
Answer answerOf(Ask const& ask) {
    Answer answer;
    answer.failure = testmodel::failureOf([&] { answer.symbols = ask(); });
    return answer;
}

/// Asks `questions` of each model until `each` has seen enough.
template <class Each>
void compareAll(std::uint32_t models, int questions, Each const& each) {
    for (std::uint32_t seed = 1; seed <= models; ++seed) {
        SearchedModel model(seed);
        for (int i = 0; i < questions; ++i)
            if (!each(seed, model.question())) return;
    }
}

TEST(RandomSearches, AnswerAsThePlainRules) {
    std::size_t hits = 0;
    std::size_t named = 0;
    std::set<unsigned> answered; // options and strategies for which something was found
    std::size_t failed = 0;
    compareAll(10000, 15, [&](std::uint32_t seed, Question const& question) {
        Answer const expected = answerOf([&] { return plainSearch(question); });
        Answer const found = answerOf([&] { return search(question); });
        EXPECT_TRUE(found == expected)
            << "seed " << seed << ", " << question << "\nfound " << namesOf(found.symbols) << found.failure
            << "\nexpected " << namesOf(expected.symbols) << expected.failure;
        FinderOptions const& o = question.options;
        auto const strategy = static_cast<unsigned>(o.getNameResolutionStrategy());
        bool const hit = !found.symbols.empty();
        if (hit)
            answered.insert(o.getIncludeSubScopes() | o.getIncludeDerivedClasses() << 1 |
                            o.getIncludeStdNs() << 2 | o.getIncludeSystemHeaders() << 3 |
                            o.getIncludeTemplateScope() << 4 | o.getIncludeAggregateScope() << 5 |
                            std::min(strategy, 3u) << 6);
        hits += hit;
        named += hit && !question.name.empty();
        failed += !found.failure.empty();
        return !testing::Test::HasFailure();
    });
    EXPECT_EQ(answered.size(), 256u) << "a combination of options never found anything";
    EXPECT_GT(hits, 20000u);
    EXPECT_GT(named, 12000u);
    EXPECT_LT(failed, 3000u);
    RecordProperty("hits", static_cast<int>(hits));
    RecordProperty("hitsByName", static_cast<int>(named));
}

struct FaultCase {
    Fault fault;
    char const* name;
};

class SearchFaults : public testing::TestWithParam<FaultCase> {};

TEST_P(SearchFaults, AreFound) {
    std::size_t asked = 0;
    bool found = false;
    compareAll(1000, 10, [&](std::uint32_t, Question const& question) {
        ++asked;
        Answer const wrong = answerOf([&] { return plainSearch(question, GetParam().fault); });
        found = wrong != answerOf([&] { return search(question); });
        return !found;
    });
    EXPECT_TRUE(found) << "not in " << asked << " questions";
    RecordProperty("questions", static_cast<int>(asked));
}

INSTANTIATE_TEST_SUITE_P(All, SearchFaults,
                         testing::Values(FaultCase{Fault::NameNeedsByteInFront, "NameNeedsByteInFront"},
                                         FaultCase{Fault::NameEndsText, "NameEndsText"},
                                         FaultCase{Fault::SignatureHoldsName, "SignatureHoldsName"},
                                         FaultCase{Fault::DeclarationIsEnough, "DeclarationIsEnough"},
                                         FaultCase{Fault::StdByName, "StdByName"},
                                         FaultCase{Fault::SkipsOnlySymbol, "SkipsOnlySymbol"},
                                         FaultCase{Fault::NamespacesFirst, "NamespacesFirst"},
                                         FaultCase{Fault::InsideBehindScope, "InsideBehindScope"},
                                         FaultCase{Fault::EntersFunctions, "EntersFunctions"},
                                         FaultCase{Fault::OddStrategyIsName, "OddStrategyIsName"},
                                         FaultCase{Fault::SubclassesAlways, "SubclassesAlways"},
                                         FaultCase{Fault::RemovesDuplicates, "RemovesDuplicates"},
                                         FaultCase{Fault::EmptyNameIsCompared, "EmptyNameIsCompared"}),
                         [](auto const& info) { return std::string(info.param.name); });

} // namespace
