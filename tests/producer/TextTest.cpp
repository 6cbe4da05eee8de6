// Small readers of text, each where the front end has no answer of its own.
#include "ConstantReader.hpp"
#include "DeclarationReader.hpp"
#include "Target.hpp"

#include <boost/uuid/uuid_io.hpp>
#include <gtest/gtest.h>

namespace zelkor::producer::test {
namespace {

TEST(Text, DefaultArgumentsAreFoundOutsideBrackets) {
    struct Row {
        char const* text;
        bool hasAssignment;
    };
    for (Row const& row :
         {Row{"int a = 2", true}, Row{"int a", false}, Row{"std::vector<int> const& v = {}", true},
          Row{"std::enable_if_t<(N == 3)> x", false}, Row{"int a /* = 2 */", false},
          Row{"char c = '='", true}, Row{"char const* s // = x\n", false}, Row{"bool (*f)(int a = 1)", false},
          Row{"int a[sizeof(b = c)]", false}, Row{"Box<N <= 3> x", false}, Row{"Box<N != 3> x", false},
          Row{"T t = \"a;)\"", true}, Row{"/* open = ", false}}) {
        EXPECT_EQ(hasTopLevelAssignment(row.text), row.hasAssignment) << row.text;
    }
}

TEST(Text, PacksOfTemplateParameters) {
    struct Row {
        char const* text;
        bool isPack;
    };
    for (Row const& row : {Row{"class... Ts", true}, Row{"typename T", false}, Row{"int... Ns", true},
                           Row{"void (*F)(int, ...)", false}, Row{"template <class...> class TT", false},
                           Row{"template <class> class... TT", true}}) {
        EXPECT_EQ(declaresPack(row.text), row.isPack) << row.text;
    }
}

TEST(Text, LiteralsAreDecoded) {
    using namespace std::string_literals;
    std::pair<std::string, std::string> const rows[] = {
        {R"("abc")", "abc"},
        {R"("a\n\t\\\"")", "a\n\t\\\""},
        {R"("a\000b")", "a\0b"s},
        {R"("\3778")", "\xff"s + "8"},
        {R"("\x41")", "A"},
        {R"("\x41)", R"("\x41)"},
        {R"(u8"\u00e9")", "\xc3\xa9"},
        {R"(L"\x20ac")", "\xe2\x82\xac"},
        {R"(U"\U0001f600")", "\xf0\x9f\x98\x80"},
        {R"("")", ""},
        {R"(no literal)", "no literal"},
    };
    for (auto const& [literal, text] : rows)
        EXPECT_EQ(decodeLiteral(literal), text) << literal;
}

TEST(Target, LanguageByStandardMacros) {
    struct Row {
        PredefinedMacros macros;
        Language language;
    };
    for (Row const& row : {Row{{{"__cplusplus", "199711L"}}, Language::Cxx03},
                           Row{{{"__cplusplus", "201103L"}}, Language::Cxx11},
                           Row{{{"__cplusplus", "201402L"}}, Language::Cxx14},
                           Row{{{"__cplusplus", "201703L"}}, Language::Cxx17},
                           Row{{{"__cplusplus", "202002L"}}, Language::Cxx}, Row{{}, Language::C89},
                           Row{{{"__STDC_VERSION__", "199901L"}}, Language::C99},
                           Row{{{"__STDC_VERSION__", "201112L"}}, Language::C11},
                           Row{{{"__STDC_VERSION__", "201710L"}}, Language::C17},
                           Row{{{"__STDC_VERSION__", "202311L"}}, Language::C}}) {
        EXPECT_EQ(languageOf(row.macros), row.language);
    }
}

TEST(Target, SizesAndKindsByPredefinedMacros) {
    PredefinedMacros const arm{{"__CHAR_BIT__", "8"},
                               {"__SIZEOF_LONG__", "4"},
                               {"__SIZEOF_POINTER__", "4"},
                               {"__SIZEOF_LONG_DOUBLE__", "8"},
                               {"__SIZE_TYPE__", "unsigned int"},
                               {"__PTRDIFF_TYPE__", "int"},
                               {"__WCHAR_TYPE__", "unsigned int"},
                               {"__CHAR_UNSIGNED__", "1"},
                               {"__BYTE_ORDER__", "__ORDER_BIG_ENDIAN__"}};
    TargetFacts const target = targetOf(arm);
    EXPECT_EQ(target.longBits, 32U);
    EXPECT_EQ(target.pointerBits, 32U);
    EXPECT_EQ(target.longDoubleBits, 64U);
    EXPECT_EQ(target.sizeType, IntegerKind::UnsignedInt);
    EXPECT_EQ(target.signedSizeType, IntegerKind::Int);
    EXPECT_EQ(target.ptrDiffType, IntegerKind::Int);
    EXPECT_EQ(target.wcharType, IntegerKind::UnsignedInt);
    EXPECT_FALSE(target.charIsSigned);
    EXPECT_FALSE(target.isLittleEndian);
    EXPECT_EQ(targetOf({{"__SIZE_TYPE__", "long long unsigned int"}}).sizeType,
              IntegerKind::UnsignedLongLong);
    EXPECT_EQ(targetOf({{"__WCHAR_TYPE__", "unsigned short"}}).wcharType, IntegerKind::UnsignedShort);
}

TEST(Identity, FamiliesKeysAndPartsDoNotCollide) {
    Id const owner = makeId("function", "c:@F@f");
    EXPECT_EQ(owner, makeId("function", "c:@F@f"));
    EXPECT_NE(owner, makeId("variable", "c:@F@f"));
    EXPECT_NE(makeId("a", "bc"), makeId("ab", "c"));
    EXPECT_NE(makeId(owner, "parameter", 1), makeId(owner, "parameter", 11));
    EXPECT_NE(makeId(owner, "parameter", 1), makeId(owner, "argument", 1));
    EXPECT_EQ(owner.version(), boost::uuids::uuid::version_name_based_sha1);
}

// Models that were imported at different times are compared by identities.
TEST(Identity, StaysWhatItEverWas) {
    Id const owner = makeId("function", "c:@F@f");
    EXPECT_EQ(boost::uuids::to_string(owner), "99e587c0-b53e-56b2-b89b-1971015ded28");
    EXPECT_EQ(boost::uuids::to_string(makeId(owner, "parameter", 11)),
              "53d69568-008d-574f-80d8-c9308881a158");
    EXPECT_EQ(boost::uuids::to_string(makeId("type", std::string(200, 'x'))),
              "27e153b3-8000-5e58-966e-10d787268fd2");
}

} // namespace
} // namespace zelkor::producer::test
