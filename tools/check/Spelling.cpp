#include "Spelling.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <string_view>
#include <vector>

namespace zelkor::producer::test {

namespace {

using Tokens = std::vector<std::string>;

bool isWord(std::string const& token) {
    auto const c = static_cast<unsigned char>(token[0]);
    return std::isalnum(c) || c == '_' || c == '#' || c >= 0x80;
}

template <std::size_t N>
bool isOneOf(std::string const& token, std::array<char const*, N> const& words) {
    return std::find(words.begin(), words.end(), token) != words.end();
}

constexpr std::array qualifiers = {"const", "volatile"};
constexpr std::array numberWords = {"unsigned", "signed", "char",   "short",   "int",
                                    "long",     "float",  "double", "__int128"};

// Behind an opening token: the index of what closes it, or the end.
std::size_t closing(Tokens const& tokens, std::size_t open) {
    std::string const opens = tokens[open];
    std::string const closes = opens == "<" ? ">" : opens == "(" ? ")" : "]";
    std::size_t depth = 0;
    for (std::size_t i = open; i < tokens.size(); ++i) {
        // "A<(sizeof(T) > 1)>"
        if (opens == "<" && tokens[i] == "(") i = std::min(closing(tokens, i), tokens.size() - 1);
        if (tokens[i] == opens) ++depth;
        if (tokens[i] == closes && --depth == 0) return i;
    }
    return tokens.size();
}

void eraseAll(std::string& text, std::string_view part) {
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at))
        text.erase(at, part.size());
}

// Blanks: only those between words separate anything. "char const * p" and "char const *p" are one.
Tokens tokensOf(std::string const& text) {
    Tokens tokens;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t const start = i;
        if (std::isspace(static_cast<unsigned char>(text[i]))) {
            ++i;
            continue;
        }
        if (isWord(std::string(1, text[i])))
            while (i < text.size() && isWord(std::string(1, text[i])))
                ++i;
        else
            i += text.compare(i, 2, "::") == 0 ? 2 : text.compare(i, 3, "...") == 0 ? 3 : 1;
        tokens.push_back(text.substr(start, i - start));
    }
    return tokens;
}

// A scope is its name: "(anonymous namespace)::f" and "f", "f[abi:cxx11]" and "f", "f(int)::Local::m" and
// "f::Local::m".
void dropUnnamedScopes(std::string& text) {
    eraseAll(text, "(anonymous namespace)::");
    eraseAll(text, "(anonymous)::");
    eraseAll(text, "[abi:cxx11]");
}

// Scopes without a name: "f()::{lambda()#1}::operator()", "f()::$_0::operator()", "f::#unnamed#::operator()".
void unifyClosures(std::string& text) {
    constexpr std::string_view word = "#unnamed#";
    for (std::string_view const start : {"{lambda(", "{unnamed type#"})
        for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
            std::size_t const end = text.find('}', at);
            if (end == std::string::npos) return;
            text.replace(at, end + 1 - at, word);
        }
    for (std::size_t at = text.find("$_"); at != std::string::npos; at = text.find("$_", at)) {
        std::size_t const end = text.find_first_not_of("0123456789", at + 2);
        text.replace(at, std::min(end, text.size()) - at, word);
    }
}

// Types without a name: "f:: /* StructType */" and "(lambda at f.cpp:1:2)".
void unifyUnnamed(std::string& text) {
    constexpr std::string_view word = "#unnamed";
    for (std::string_view const kind : {"/* StructType */", "/* UnionType */", "/* EnumType */"})
        for (std::size_t at = text.find(kind); at != std::string::npos; at = text.find(kind, at))
            text.replace(at, kind.size(), word);
    for (std::string_view const start : {"(lambda at ", "(unnamed "})
        for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at))
            text.replace(at, std::min(text.find(')', at), text.size() - 1) + 1 - at, word);
}

// Other words for one thing: "struct S *" and "S *", "int *__restrict" and "int * restrict", and the
// abbreviations of mangled names.
void unifyWords(std::string& text) {
    constexpr std::array<std::array<std::string_view, 2>, 4> longer = {{
        {"decltype(nullptr)", "std::nullptr_t"},
        {"std::ostream", "std::basic_ostream<char, std::char_traits<char>>"},
        {"std::istream", "std::basic_istream<char, std::char_traits<char>>"},
        {"std::iostream", "std::basic_iostream<char, std::char_traits<char>>"},
    }};
    for (auto const& [from, to] : longer)
        for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
            text.replace(at, from.size(), to);
}
void unifyWords(Tokens& tokens) {
    constexpr std::array dropped = {"struct", "class", "union", "enum", "typename", "template"};
    std::erase_if(tokens, [&](std::string const& token) { return isOneOf(token, dropped); });
    for (std::string& token : tokens) {
        if (token == "__restrict" || token == "__restrict__") token = "restrict";
        if (token == "_Bool") token = "bool";
        if (token == "__int128_t") token = "__int128";
    }
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i] != "__uint128_t") continue;
        tokens[i] = "__int128";
        tokens.insert(tokens.begin() + static_cast<std::ptrdiff_t>(i), "unsigned");
    }
}

// The layers around a vector, which the model writes in front of its bracket: "int &[2]" and "int
// __vector(2)&".
void moveVectors(Tokens& tokens) {
    for (std::size_t i = 0; i + 3 < tokens.size(); ++i) {
        if (tokens[i] != "__vector") continue;
        Tokens bracket = {"[", tokens[i + 2], "]"};
        auto const at = tokens.begin() + static_cast<std::ptrdiff_t>(i);
        auto const end = std::find_if(at + 4, tokens.end(), [](std::string const& token) {
            return token != "*" && token != "&" && !isOneOf(token, qualifiers);
        });
        tokens.insert(end, bracket.begin(), bracket.end());
        tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i),
                     tokens.begin() + static_cast<std::ptrdiff_t>(i) + 4);
    }
}

// Function types of the model have no qualifiers: "f(void (C::*)() const noexcept)" and "f(void (*)())".
// Outside all brackets `const` belongs to a method, unless the text is a type.
void dropFunctionQualifiers(Tokens& tokens, bool isType) {
    std::erase(tokens, "noexcept");
    int depth = isType ? 1 : 0;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i] == "(") ++depth;
        if (tokens[i] != ")") continue;
        --depth;
        while (depth > 0 && i + 1 < tokens.size() && isOneOf(tokens[i + 1], qualifiers))
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i) + 1);
    }
}

// Methods of the model have none: "C::f() const &" and "C::f() const".
void dropReferenceQualifiers(Tokens& tokens) {
    std::size_t end = tokens.size();
    while (end > 0 && tokens[end - 1] == "&")
        --end;
    bool const isMethod = end > 0 && (tokens[end - 1] == ")" || tokens[end - 1] == "const");
    if (isMethod && std::find(tokens.begin(), tokens.end(), "(") != tokens.end()) tokens.resize(end);
}

// No parameters: "(void)" and "()".
void dropVoidLists(Tokens& tokens) {
    for (std::size_t i = 0; i + 2 < tokens.size(); ++i)
        if (tokens[i] == "(" && tokens[i + 1] == "void" && tokens[i + 2] == ")")
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i) + 1);
}

// The declarator around a function type: "int (*)(char)" and "int /* FunctionType */ (char)"; so are the
// class of a pointer to member, "int C::*" and "int *".
void dropDeclarators(Tokens& tokens) {
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i] != "(" || i + 2 >= tokens.size()) continue;
        std::size_t const end = closing(tokens, i);
        bool const isFollowed = end + 1 < tokens.size() && tokens[end + 1] == "(";
        bool const isDeclarator = tokens[end - 1] == "*" || tokens[end - 1] == "&" ||
                                  (tokens[i + 1] == "*" && isOneOf(tokens[end - 1], qualifiers));
        if (isFollowed && isDeclarator)
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i),
                         tokens.begin() + static_cast<std::ptrdiff_t>(end) + 1);
    }
    for (std::size_t i = 0; i + 2 < tokens.size(); ++i)
        if (isWord(tokens[i]) && tokens[i + 1] == "::" && tokens[i + 2] == "*")
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i),
                         tokens.begin() + static_cast<std::ptrdiff_t>(i) + 2);
}

// Qualifiers in front of the type: "const char *" and "char const *".
void moveQualifiers(Tokens& tokens) {
    Tokens result;
    for (std::size_t i = 0; i < tokens.size();) {
        bool const begins = result.empty() || result.back() == "(" || result.back() == "," ||
                            result.back() == "<" || result.back() == "operator";
        Tokens moved;
        while (begins && i < tokens.size() && isOneOf(tokens[i], qualifiers))
            moved.push_back(tokens[i++]);
        if (moved.empty()) {
            result.push_back(tokens[i++]);
            continue;
        }
        // What they qualify: the words of a number, or a name with its scopes and arguments.
        Tokens type;
        while (i < tokens.size()) {
            bool const joins = type.empty() || type.back() == "::" ||
                               (isOneOf(type.back(), numberWords) && isOneOf(tokens[i], numberWords));
            if (tokens[i] == "<") {
                std::size_t const end = std::min(closing(tokens, i) + 1, tokens.size());
                Tokens inner(tokens.begin() + static_cast<std::ptrdiff_t>(i),
                             tokens.begin() + static_cast<std::ptrdiff_t>(end));
                moveQualifiers(inner);
                type.insert(type.end(), inner.begin(), inner.end());
                i = end;
            } else if (tokens[i] == "::" || (isWord(tokens[i]) && joins)) {
                type.push_back(tokens[i++]);
            } else {
                break;
            }
        }
        result.insert(result.end(), type.begin(), type.end());
        result.insert(result.end(), moved.begin(), moved.end());
    }
    tokens = std::move(result);
}

// Numbers among template arguments: "3u" and "3", "true" and "1", "(ns::E)2" and "2".
void plainNumbers(Tokens& tokens) {
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        bool const inList = i > 0 && (tokens[i - 1] == "<" || tokens[i - 1] == ",");
        if (inList && tokens[i] == "(") {
            std::size_t const end = closing(tokens, i);
            if (end + 1 < tokens.size() && std::isdigit(static_cast<unsigned char>(tokens[end + 1][0])))
                tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i),
                             tokens.begin() + static_cast<std::ptrdiff_t>(end) + 1);
        }
        std::string& token = tokens[i];
        if (inList && token == "true") token = "1";
        if (inList && token == "false") token = "0";
        if (std::isdigit(static_cast<unsigned char>(token[0])))
            token.erase(std::min(token.find_first_of("ul"), token.size()));
    }
}

void nameScopesOnly(Tokens& tokens) {
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        bool const isCallOperator =
            i > 2 && tokens[i - 1] == ")" && tokens[i - 2] == "(" && tokens[i - 3] == "operator";
        bool const isNamed = (isWord(tokens[i - 1]) && tokens[i - 1] != "operator") || tokens[i - 1] == ">";
        if (tokens[i] != "(" || (!isNamed && !isCallOperator)) continue;
        std::size_t end = closing(tokens, i);
        if (end + 1 < tokens.size() && tokens[end + 1] == "const") ++end;
        if (end + 1 < tokens.size() && tokens[end + 1] == "::")
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i),
                         tokens.begin() + static_cast<std::ptrdiff_t>(end) + 1);
    }
    auto const repeated = [](std::string const& a, std::string const& b) { return a == "::" && b == "::"; };
    tokens.erase(std::unique(tokens.begin(), tokens.end(), repeated), tokens.end());
}

// What the source may leave out: "std::string" and "string", "std::vector<int>" and "vector".
void dropScopesAndArguments(Tokens& tokens) {
    Tokens result;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i] == "<") {
            i = closing(tokens, i);
        } else if (tokens[i] == "::") {
            if (!result.empty() && isWord(result.back()) && !isOneOf(result.back(), qualifiers))
                result.pop_back();
        } else {
            result.push_back(tokens[i]);
        }
    }
    tokens = std::move(result);
}

// The same for the type in the name of a conversion, which is named as the source writes it.
void shortenConversions(Tokens& tokens) {
    auto const last = std::find(tokens.rbegin(), tokens.rend(), "operator"); // others are scopes
    if (last == tokens.rend()) return;
    auto const at = last.base() - 1;
    auto const end = std::find(at, tokens.end(), "(");
    if (at + 1 == end || !isWord(at[1])) return;
    Tokens type(at + 1, end);
    dropScopesAndArguments(type);
    tokens.insert(tokens.erase(at + 1, end), type.begin(), type.end());
}

// The ellipsis of a pack, wherever it stands: "A ... &&" and "A &&...".
void dropEllipses(Tokens& tokens) {
    for (std::size_t i = tokens.size(); i-- > 0;)
        if (tokens[i] == "..." && (i == 0 || tokens[i - 1] != ","))
            tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i));
}

// Parameters that are arrays are pointers: "f(int[3])" and "f(int *)", "f(int[2][3])" and "f(int (*)[3])".
void decayArrays(Tokens& tokens) {
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        bool const isVector = i > 0 && tokens[i - 1] == "&"; // there are no arrays of references
        if (tokens[i] != "[" || tokens[i - 1] == "]" || tokens[i - 1] == ")" || isVector) continue;
        std::size_t const end = closing(tokens, i);
        if (end + 1 >= tokens.size()) continue;
        Tokens pointer;
        if (tokens[end + 1] == "," || tokens[end + 1] == ")") pointer = {"*"};
        if (tokens[end + 1] == "[") pointer = {"(", "*", ")"};
        if (pointer.empty()) continue;
        auto const at = tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i),
                                     tokens.begin() + static_cast<std::ptrdiff_t>(end) + 1);
        tokens.insert(at, pointer.begin(), pointer.end());
    }
}

// The model has numbers for extents: "T (&)[N]" and "T &[]".
void dropNamedExtents(Tokens& tokens) {
    for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
        if (tokens[i] != "[" || std::isdigit(static_cast<unsigned char>(tokens[i + 1][0]))) continue;
        std::size_t const end = std::min(closing(tokens, i), tokens.size());
        tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                     tokens.begin() + static_cast<std::ptrdiff_t>(end));
    }
}

std::string joined(Tokens const& tokens) {
    std::string text;
    for (std::string const& token : tokens)
        text += (text.empty() ? "" : " ") + token;
    return text;
}

Tokens commonForm(std::string text, bool expanded) {
    eraseAll(text, "/* FunctionType */");
    dropUnnamedScopes(text);
    if (expanded) {
        unifyClosures(text);
        unifyWords(text);
    }
    Tokens tokens = tokensOf(text);
    unifyWords(tokens);
    moveVectors(tokens);
    if (expanded) dropReferenceQualifiers(tokens);
    dropFunctionQualifiers(tokens, !expanded);
    dropVoidLists(tokens);
    dropDeclarators(tokens);
    moveQualifiers(tokens);
    return tokens;
}

} // namespace

std::string fullSpelling(std::string const& text) {
    Tokens tokens = commonForm(text, true);
    plainNumbers(tokens);
    nameScopesOnly(tokens);
    shortenConversions(tokens);
    decayArrays(tokens);
    return joined(tokens);
}

std::string writtenSpelling(std::string const& text) {
    std::string unified = text;
    unifyUnnamed(unified);
    Tokens tokens = commonForm(unified, false);
    dropEllipses(tokens);
    dropScopesAndArguments(tokens);
    dropNamedExtents(tokens);
    return joined(tokens);
}

} // namespace zelkor::producer::test
