// Comments and undefinitions by the bytes of a file, against the tokens of the front end.
#include "SourceScanner.hpp"
#include "Clang.hpp"
#include "Target.hpp"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace zelkor::producer {

// For messages of failed comparisons.
void PrintTo(ScannedPiece const& piece, std::ostream* stream) {
    *stream << piece.start.line << ':' << piece.start.column << '-' << piece.end.line << ':'
            << piece.end.column << " [" << piece.text << ']';
}

namespace test {
namespace {

// One unit in memory, parsed as one standard wants it.
class TokenizedText {
  public:
    TokenizedText(std::string const& text, std::string const& standard)
        : text_(text), index_(clang_createIndex(0, 0)) {
        std::string const option = "-std=" + standard;
        std::array<char const*, 4> const arguments{
            "-w", "-x", standard.find("++") == std::string::npos ? "c" : "c++", option.c_str()};
        CXUnsavedFile file{"text.c", text_.data(), text_.size()};
        unit_.reset(clang_parseTranslationUnit(index_.get(), "text.c", arguments.data(),
                                               static_cast<int>(arguments.size()), &file, 1,
                                               CXTranslationUnit_DetailedPreprocessingRecord));
    }

    std::vector<ScannedPiece> comments() const {
        CXFile const file = clang_getFile(unit_.get(), "text.c");
        CXSourceRange const all = clang_getRange(
            clang_getLocationForOffset(unit_.get(), file, 0),
            clang_getLocationForOffset(unit_.get(), file, static_cast<unsigned>(text_.size())));
        CXToken* tokens = nullptr;
        unsigned count = 0;
        clang_tokenize(unit_.get(), all, &tokens, &count);
        std::vector<ScannedPiece> pieces;
        for (unsigned i = 0; i < count; ++i) {
            if (clang_getTokenKind(tokens[i]) == CXToken_Comment)
                pieces.push_back(pieceOf(clang_getTokenExtent(unit_.get(), tokens[i])));
        }
        clang_disposeTokens(unit_.get(), tokens, count);
        return pieces;
    }

    LexicalRules rules() const {
        PredefinedMacros macros;
        visitChildren(clang_getTranslationUnitCursor(unit_.get()), [&](CXCursor cursor) {
            if (clang_getCursorKind(cursor) != CXCursor_MacroDefinition) return CXChildVisit_Continue;
            std::string const name = toText(clang_getCursorSpelling(cursor));
            CXToken* tokens = nullptr;
            unsigned count = 0;
            clang_tokenize(unit_.get(), clang_getCursorExtent(cursor), &tokens, &count);
            macros[name] = count > 1 ? toText(clang_getTokenSpelling(unit_.get(), tokens[1])) : std::string();
            clang_disposeTokens(unit_.get(), tokens, count);
            return CXChildVisit_Continue;
        });
        return lexicalRulesOf(macros);
    }

  private:
    // The front end's token begins with an escaped end of line before it; a comment begins with its mark.
    ScannedPiece pieceOf(CXSourceRange range) const {
        CXFile file = nullptr;
        unsigned start = 0;
        clang_getFileLocation(clang_getRangeStart(range), &file, nullptr, nullptr, &start);
        while (text_[start] != '/')
            start += text_.compare(start, 3, "?\?/") == 0 ? 3 : 1;
        ScannedPiece piece;
        unsigned end = 0;
        clang_getFileLocation(clang_getLocationForOffset(unit_.get(), file, start), nullptr,
                              &piece.start.line, &piece.start.column, nullptr);
        clang_getFileLocation(clang_getRangeEnd(range), nullptr, &piece.end.line, &piece.end.column, &end);
        if (piece.end.column > 1) --piece.end.column;
        piece.text = std::string_view(text_).substr(start, end - start);
        return piece;
    }

    std::string const& text_;
    ClangIndex index_;
    ClangUnit unit_;
};

constexpr std::array standards{"c89",   "gnu89", "c99",   "gnu99", "c17",    "gnu17",
                               "gnu2x", "c++98", "c++11", "c++14", "gnu++17"};

// What decides whether something is a comment, and what only looks as if it did.
constexpr std::array<std::string_view, 48> pieces{
    "/",       "*",      "//",       "/*",      "*/",         "\n",    "\n",     "\r\n",   "\r",  "\\\n",
    "\\ \t\n", "\\\r\n", "\?\?/\n",  "\?\?/",   "\\",         "\"",    "'",      "R\"(",   ")\"", "R\"x(",
    ")x\"",    "u8R\"(", "aR\"(",    "R\\\n",   "1'000",      "0x1'f", "1'",     ".5'6",   "#",   " undef ",
    "a",       "don't",  "\xC3\xA9", " \xFF ",  " ",          "\t",    "\"//\"", "'\"'",   "//*", "/*/",
    "*\\\n/",  "\\\"",   "\\'",      "#if 0\n", "\n#endif\n", "R\" (", "$",      "/* x */"};

TEST(SourceScanner, FindsTheCommentsOfTheFrontEnd) {
    std::minstd_rand random(20);
    for (std::string_view const standard : standards) {
        for (int round = 0; round < 60; ++round) {
            std::string text;
            for (unsigned i = 0, count = 1 + random() % 60; i < count; ++i)
                text += pieces[random() % pieces.size()];
            TokenizedText const unit(text, std::string(standard));
            std::vector<ScannedPiece> const found = scanSource(text, unit.rules()).comments;
            std::vector<ScannedPiece> expected = unit.comments();
            // Before the first `//` of a file of C89 `//*` is no comment, and the front end measures by that
            // even behind one.
            for (std::size_t i = 0; i < std::min(found.size(), expected.size()); ++i) {
                if (expected[i].text == "/" && expected[i].start == found[i].start) expected[i] = found[i];
            }
            ASSERT_EQ(found, expected) << standard << ":\n" << testing::PrintToString(text);
        }
    }
}

TEST(SourceScanner, FindsUndefinitions) {
    struct Row {
        char const* text;
        std::vector<std::string> names;
    };
    for (Row const& row : {Row{"#undef A\n  # undef /* b */ B // c\n", {"A", "B"}},
                           Row{"/* a */ # /* b */ undef C\n#un\\\ndef D\n", {"C", "D"}},
                           Row{"x # undef E\n\"#undef F\"\n#undefine G\n#define undef H\n# undef\nI\n", {}},
                           Row{"// #undef J\n/*\n#undef K\n*/\n#if 0\n#undef L\n#endif", {"L"}},
                           Row{"#undef \xC3\xA9t\xC3\xA9", {"\xC3\xA9t\xC3\xA9"}}}) {
        std::vector<std::string> names;
        for (ScannedPiece const& name : scanSource(row.text, {}).undefinitions)
            names.emplace_back(name.text);
        EXPECT_EQ(names, row.names) << row.text;
    }
}

} // namespace
} // namespace test
} // namespace zelkor::producer
