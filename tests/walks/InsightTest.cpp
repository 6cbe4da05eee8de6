// What code-insight records compute from positions: the worked situations and the asymmetries.

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace za = zelkor::ast;
namespace zi = zelkor::ast::codeinsight;
namespace zs = zelkor::ast::source;
namespace zt = zelkor::ast::types;

namespace {

class Insight : public testing::Test {
  protected:
    zs::SourceFile makeFile(char16_t const* path, bool isInclude) {
        zs::SourceFile const file = zs::SourceFile::create(model);
        file.setPath(path);
        file.setIsInclude(isInclude);
        return file;
    }
    /// A position in words: the file (`c` the main file, `h` a header, `H` another record of the header's
    /// path that is no header, `-` no file), line and column.
    zs::SourcePosition position(std::string const& where) {
        zs::SourcePosition const made = zs::SourcePosition::create(model);
        made.setLine(static_cast<unsigned>(where.at(1) - '0'));
        made.setCol(static_cast<unsigned>(where.at(3) - '0'));
        if (where[0] != '-') made.setFile(where[0] == 'c' ? source : where[0] == 'h' ? header : twin);
        return made;
    }
    void place(zs::LocatedObject const& object, std::string const& definition, char const* declarations) {
        if (!definition.empty()) object.setDefPos(position(definition));
        std::istringstream words(declarations);
        for (std::string where; words >> where;)
            object.getDeclPosMutable().add(position(where));
    }

    za::Ast ast;
    brant::zero::Model model = ast.getModel();
    // A header by its name, but not by how it came in: names play no part.
    zs::SourceFile source = makeFile(u"a.hpp", false);
    zs::SourceFile header = makeFile(u"a.c", true);
    zs::SourceFile twin = makeFile(u"a.c", false);
};

/// \returns which of IsDefined, IsDefinedInHeader, IsDeclared, IsDeclaredInHeader are true.
template <class Info>
std::string answers(Info const& info) {
    std::string text;
    for (auto const& [isTrue, letter] :
         {std::pair(info.getIsDefined(), 'D'), std::pair(info.getIsDefinedInHeader(), 'h'),
          std::pair(info.getIsDeclared(), 'd'), std::pair(info.getIsDeclaredInHeader(), 'h')})
        text += isTrue ? letter : '.';
    return text;
}

struct Row {
    char const* what;
    bool flag; ///< of a function: stored IsDefined; of a type: IsIncomplete; of a variable: extern
    char const* definition;
    char const* declarations;
    char const* expected;
};

constexpr bool T = true;
constexpr bool F = false;

} // namespace

TEST_F(Insight, Functions) {
    Row const rows[] = {
        {"declared by its definition only", T, "c3:1", "c3:1", "D..."},
        {"declared by its definition only, in a header", T, "h3:1", "h3:1", "Dh.."},
        {"defined in the main file, declared in a header", T, "c3:1", "c3:1 h1:1", "D.dh"},
        {"not defined, declared in the main file", F, "", "c1:1", "..dh"},
        {"not defined, not declared", F, "", "", "...."},
        {"defined, no declarations", T, "h3:1", "", "Dh.."},
        {"defined in a header, declared in the main file", T, "h3:1", "c1:1", "Dhd."},
        {"not defined, with a definition position", F, "h3:1", "h3:1", "..dh"},
        {"same line and column in another file", T, "c3:1", "h3:1", "D.dh"},
        {"another column", T, "c3:1", "c3:2", "D.d."},
        {"another line", T, "c3:1", "c4:1", "D.d."},
        {"another record of the same path is the same file", T, "h3:1", "H3:1", "Dh.."},
        {"a declaration without a file", T, "c3:1", "-3:1", "D.d."},
        {"a declaration without a file before one in a header", T, "c3:1", "-3:1 h1:1", "D.dh"},
        {"a definition without a file", T, "-3:1", "-3:1", "D.d."},
        {"defined, but where is not known", T, "", "h1:1", "D.dh"},
    };
    for (Row const& row : rows) {
        zi::FunctionInfo const info = zi::FunctionInfo::create(model);
        info.setIsDefined(row.flag);
        std::string const alone = row.flag ? "D..." : "....";
        EXPECT_EQ(answers(info), alone) << "without a function";
        za::Function const function = za::Function::create(model);
        place(function, row.definition, row.declarations);
        info.setFunction(function);
        EXPECT_EQ(answers(info), row.expected) << row.what;
        function.destroy();
        EXPECT_EQ(answers(info), alone) << "with a dead function";
    }
}

TEST_F(Insight, Types) {
    Row const rows[] = {
        {"defined in the main file", F, "c1:1", "", "D..."},
        {"defined in a header", F, "h1:1", "", "Dhdh"},
        {"forward declared in a header", T, "h1:1", "", "..dh"},
        {"incomplete in the main file", T, "c1:1", "h1:1", "...."},
        {"declarations do not count", F, "", "h1:1", "...."},
        {"defined nowhere known", F, "-1:1", "", "D..."},
    };
    for (Row const& row : rows) {
        zi::TypeInfo const info = zi::TypeInfo::create(model);
        EXPECT_EQ(answers(info), "....");
        zt::StructType const type = zt::StructType::create(model);
        type.setIsIncomplete(row.flag);
        place(type, row.definition, row.declarations);
        info.setType(type);
        EXPECT_EQ(answers(info), row.expected) << row.what;
        if (row.flag) continue;
        zt::EnumType const other = zt::EnumType::create(model);
        place(other, row.definition, row.declarations);
        info.setType(other);
        EXPECT_EQ(answers(info), row.expected) << row.what << ", no aggregate";
    }
}

TEST_F(Insight, Variables) {
    Row const rows[] = {
        {"extern in a header, no definition", T, "", "h1:1", "..dh"},
        {"defined in the main file, no declaration", F, "c1:1", "", "D..."},
        {"defined in a header, no declaration", F, "h1:1", "", "Dhdh"},
        {"extern with a definition position", T, "h1:1", "", "...."},
        {"defined in a header, declared in the main file", F, "h1:1", "c1:1", "Dhd."},
        {"its definition is a declaration too", F, "c1:1", "c1:1", "D.d."},
        {"its definition in a header is a declaration too", F, "h1:1", "h1:1", "Dhdh"},
        {"a declaration without a file is passed over", F, "c1:1", "-1:1 h2:1", "D.dh"},
        {"neither", F, "", "", "...."},
    };
    for (Row const& row : rows) {
        zi::VariableInfo const info = zi::VariableInfo::create(model);
        EXPECT_EQ(answers(info), "....");
        za::Variable const variable = za::Variable::create(model);
        if (row.flag) variable.setStorageClass(za::StorageClassKind::Extern);
        place(variable, row.definition, row.declarations);
        info.setVariable(variable);
        EXPECT_EQ(answers(info), row.expected) << row.what;
        variable.destroy();
        EXPECT_EQ(answers(info), "....") << "with a dead variable";
    }
}

TEST_F(Insight, EntryPointsAreTheRecordsNobodyCalls) {
    zi::CodeInsight const insight = zi::CodeInsight::create(model);
    brant::zero::meta::Property entryPoints;
    for (brant::zero::schema::PropertyRow const& row : zi::CodeInsight::Impl::rows)
        if (std::string_view(row.name) == "EntryPoints") entryPoints = brant::zero::Core::propertyOf(&row);
    ASSERT_TRUE(entryPoints);
    EXPECT_TRUE(insight.getEntryPoints().empty());
    EXPECT_FALSE(insight.hasPropertyValue(entryPoints));
    std::vector<zi::FunctionInfo> expected;
    for (int i = 0; i < 8; ++i) {
        zi::FunctionInfo const info = zi::FunctionInfo::create(model);
        info.setIsCalled((i & 1) != 0);
        info.setIsAddressTaken((i & 2) != 0);
        info.setIsDefined((i & 4) != 0);
        insight.getFunctionsMutable().add(info);
        if ((i & 1) == 0) expected.push_back(info);
    }
    EXPECT_EQ(insight.getEntryPoints(), expected);
    EXPECT_TRUE(insight.hasPropertyValue(entryPoints));
    brant::zero::Value const value = insight.getPropertyValue(entryPoints);
    EXPECT_EQ(value.flags(), brant::zero::ValueFlags::Sequence);
    EXPECT_EQ(value.getType(), zi::FunctionInfo::metaClass());
    EXPECT_EQ(value.getValue<std::vector<zi::FunctionInfo>>(), expected);
    EXPECT_ANY_THROW(insight.setPropertyValue(entryPoints, value));
    EXPECT_EQ(model.verify().has_value(), false);
}
