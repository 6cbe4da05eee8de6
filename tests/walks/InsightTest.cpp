// What code-insight records compute from positions: the worked situations and the asymmetries.

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <array>

namespace za = zelkor::ast;
namespace zi = zelkor::ast::codeinsight;
namespace zs = zelkor::ast::source;
namespace zt = zelkor::ast::types;

namespace {

/// A position in words: the file (`c` the main file, `h` a header, `H` another record of the header's path
/// that is no header, `-` no file), line and column.
struct Where {
    char file;
    unsigned line;
    unsigned col;
};

class Insight : public testing::Test {
  protected:
    zs::SourceFile makeFile(char16_t const* path, bool isInclude) {
        zs::SourceFile const file = zs::SourceFile::create(model);
        file.setPath(path);
        file.setIsInclude(isInclude);
        return file;
    }
    zs::SourcePosition position(Where const& where) {
        zs::SourcePosition const made = zs::SourcePosition::create(model);
        made.setLine(where.line);
        made.setCol(where.col);
        if (where.file != '-') made.setFile(where.file == 'c' ? source : where.file == 'h' ? header : twin);
        return made;
    }
    void place(zs::LocatedObject const& object, std::optional<Where> const& definition,
               std::vector<Where> const& declarations) {
        if (definition) object.setDefPos(position(*definition));
        for (Where const& where : declarations)
            object.getDeclPosMutable().add(position(where));
    }

    za::Ast ast;
    brant::zero::Model model = ast.getModel();
    // A header by its name, but not by how it came in: names play no part.
    zs::SourceFile source = makeFile(u"a.hpp", false);
    zs::SourceFile header = makeFile(u"a.c", true);
    zs::SourceFile twin = makeFile(u"a.c", false);
};

/// IsDefined, IsDefinedInHeader, IsDeclared, IsDeclaredInHeader.
using Answers = std::array<bool, 4>;

template <class Info>
Answers answers(Info const& info) {
    return {info.getIsDefined(), info.getIsDefinedInHeader(), info.getIsDeclared(),
            info.getIsDeclaredInHeader()};
}

struct Row {
    char const* what;
    bool flag; ///< of a function: stored IsDefined; of a type: IsIncomplete; of a variable: extern
    std::optional<Where> definition;
    std::vector<Where> declarations;
    Answers expected;
};

constexpr bool T = true;
constexpr bool F = false;

} // namespace

TEST_F(Insight, Functions) {
    Row const rows[] = {
        {"declared by its definition only", T, Where{'c', 3, 1}, {{'c', 3, 1}}, {T, F, F, F}},
        {"defined in the main file, declared in a header",
         T,
         Where{'c', 3, 1},
         {{'c', 3, 1}, {'h', 1, 1}},
         {T, F, T, T}},
        {"not defined, declared in the main file", F, {}, {{'c', 1, 1}}, {F, F, T, T}},
        {"not defined, not declared", F, {}, {}, {F, F, F, F}},
        {"defined, no declarations", T, Where{'h', 3, 1}, {}, {T, T, F, F}},
        {"defined in a header, declared in the main file", T, Where{'h', 3, 1}, {{'c', 1, 1}}, {T, T, T, F}},
        {"not defined, with a definition position", F, Where{'h', 3, 1}, {{'h', 3, 1}}, {F, F, T, T}},
        {"same line and column in another file", T, Where{'c', 3, 1}, {{'h', 3, 1}}, {T, F, T, T}},
        {"another column", T, Where{'c', 3, 1}, {{'c', 3, 2}}, {T, F, T, F}},
        {"another line", T, Where{'c', 3, 1}, {{'c', 4, 1}}, {T, F, T, F}},
        {"another record of the same path is the same file",
         T,
         Where{'h', 3, 1},
         {{'H', 3, 1}},
         {T, T, F, F}},
        {"a declaration without a file", T, Where{'c', 3, 1}, {{'-', 3, 1}}, {T, F, T, F}},
        {"a declaration without a file before one in a header",
         T,
         Where{'c', 3, 1},
         {{'-', 3, 1}, {'h', 1, 1}},
         {T, F, T, T}},
        {"a definition without a file", T, Where{'-', 3, 1}, {{'-', 3, 1}}, {T, F, T, F}},
        {"defined, but where is not known", T, {}, {{'h', 1, 1}}, {T, F, T, T}},
    };
    for (Row const& row : rows) {
        zi::FunctionInfo const info = zi::FunctionInfo::create(model);
        info.setIsDefined(row.flag);
        EXPECT_EQ(answers(info), (Answers{row.flag, F, F, F})) << "without a function";
        za::Function const function = za::Function::create(model);
        place(function, row.definition, row.declarations);
        info.setFunction(function);
        EXPECT_EQ(answers(info), row.expected) << row.what;
        function.destroy();
        EXPECT_EQ(answers(info), (Answers{row.flag, F, F, F})) << "with a dead function";
    }
}

TEST_F(Insight, Types) {
    Row const rows[] = {
        {"defined in the main file", F, Where{'c', 1, 1}, {}, {T, F, F, F}},
        {"defined in a header", F, Where{'h', 1, 1}, {}, {T, T, T, T}},
        {"forward declared in a header", T, Where{'h', 1, 1}, {}, {F, F, T, T}},
        {"incomplete in the main file", T, Where{'c', 1, 1}, {{'h', 1, 1}}, {F, F, F, F}},
        {"declarations do not count", F, {}, {{'h', 1, 1}}, {F, F, F, F}},
        {"defined nowhere known", F, Where{'-', 1, 1}, {}, {T, F, F, F}},
    };
    for (Row const& row : rows) {
        zi::TypeInfo const info = zi::TypeInfo::create(model);
        EXPECT_EQ(answers(info), (Answers{F, F, F, F}));
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
        {"extern in a header, no definition", T, {}, {{'h', 1, 1}}, {F, F, T, T}},
        {"defined in the main file, no declaration", F, Where{'c', 1, 1}, {}, {T, F, F, F}},
        {"defined in a header, no declaration", F, Where{'h', 1, 1}, {}, {T, T, T, T}},
        {"extern with a definition position", T, Where{'h', 1, 1}, {}, {F, F, F, F}},
        {"defined in a header, declared in the main file", F, Where{'h', 1, 1}, {{'c', 1, 1}}, {T, T, T, F}},
        {"its definition is a declaration too", F, Where{'c', 1, 1}, {{'c', 1, 1}}, {T, F, T, F}},
        {"its definition in a header is a declaration too", F, Where{'h', 1, 1}, {{'h', 1, 1}}, {T, T, T, T}},
        {"a declaration without a file is passed over",
         F,
         Where{'c', 1, 1},
         {{'-', 1, 1}, {'h', 2, 1}},
         {T, F, T, T}},
        {"neither", F, {}, {}, {F, F, F, F}},
    };
    for (Row const& row : rows) {
        zi::VariableInfo const info = zi::VariableInfo::create(model);
        EXPECT_EQ(answers(info), (Answers{F, F, F, F}));
        za::Variable const variable = za::Variable::create(model);
        if (row.flag) variable.setStorageClass(za::StorageClassKind::Extern);
        place(variable, row.definition, row.declarations);
        info.setVariable(variable);
        EXPECT_EQ(answers(info), row.expected) << row.what;
        variable.destroy();
        EXPECT_EQ(answers(info), (Answers{F, F, F, F})) << "with a dead variable";
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
