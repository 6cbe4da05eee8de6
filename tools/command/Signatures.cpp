#include "Signatures.hpp"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <vector>

namespace zelkor::command {

namespace za = zelkor::ast;

namespace {

using Tokens = std::vector<std::string>;
using Position = Tokens::const_iterator;

/// `#` is part of what stands in place of a name that is missing.
bool isWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '#' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// Words, `::` and single characters; blanks are gone.
Tokens tokensOf(std::string_view text) {
    Tokens tokens;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i + 1;
        if (isWordCharacter(text[i]))
            while (end < text.size() && isWordCharacter(text[end]))
                ++end;
        else if (text.substr(i, 2) == "::")
            end = i + 2;
        if (std::isspace(static_cast<unsigned char>(text[i])) == 0)
            tokens.emplace_back(text.substr(i, end - i));
        i = end;
    }
    return tokens;
}

std::string joined(Tokens const& tokens) {
    std::string out;
    for (std::string const& token : tokens) {
        if (!out.empty() && isWordCharacter(out.back()) && isWordCharacter(token.front())) out += ' ';
        out += token;
    }
    return out;
}

bool isQualifier(std::string const& token) {
    return token == "const" || token == "volatile";
}

/// \returns how the nesting of brackets changes.
int nesting(std::string const& token) {
    return token == "<" || token == "(" || token == "["   ? 1
           : token == ">" || token == ")" || token == "]" ? -1
                                                          : 0;
}

/// Qualifiers in front of a type go behind its name: `const A<B> *` becomes `A<B> const *`. Inside brackets
/// types begin anew.
Tokens qualifiersBehind(Tokens const& tokens) {
    struct Open {
        Tokens qualifiers; ///< not yet placed
        bool named = false;
    };
    std::vector<Open> open(1);
    Tokens out;
    auto const place = [&] {
        Open& type = open.back();
        if (type.named) out.insert(out.end(), type.qualifiers.begin(), type.qualifiers.end());
        if (type.named) type.qualifiers.clear();
    };
    for (std::string const& token : tokens) {
        Open& type = open.back();
        if (isQualifier(token) && !type.named) {
            type.qualifiers.push_back(token);
            continue;
        }
        bool const partOfName =
            (isWordCharacter(token.front()) && !isQualifier(token)) || token == "::" || token == "<";
        if (partOfName)
            type.named = true;
        else
            place();
        if (token == "," && open.size() >= 1) open.back() = Open();
        if (nesting(token) > 0) open.emplace_back();
        if (nesting(token) < 0 && open.size() > 1) open.pop_back();
        out.push_back(token);
    }
    place();
    return out;
}

std::string comparable(std::string_view text) {
    std::string const types = joined(qualifiersBehind(tokensOf(text)));
    return types == "void" ? std::string() : types;
}

std::string parameterList(za::Function const& function, bool skipTypedefs, bool withNames) {
    std::string text;
    for (za::Variable const& parameter : function.getParams()) {
        if (!text.empty()) text += ',';
        std::string const name = withNames ? parameter.getName() : std::string();
        text += za::types::Type::generateTypeName(parameter.getType(), name, skipTypedefs);
    }
    if (function.getIsVariadic()) text += text.empty() ? "..." : ",...";
    return comparable(text);
}

/// `ns::A const&` without `ns::`.
std::string withoutScopes(std::string const& types) {
    Tokens kept;
    for (std::string& token : tokensOf(types))
        if (token == "::" && !kept.empty() && isWordCharacter(kept.back().front()))
            kept.pop_back();
        else if (token != "::")
            kept.push_back(std::move(token));
    return joined(kept);
}

/// \returns where the bracket that the last character closes is opened.
std::size_t openingOf(std::string_view text) {
    int depth = 0;
    for (std::size_t i = text.size(); i-- > 0;) {
        depth += text[i] == ')' ? 1 : text[i] == '(' ? -1 : 0;
        if (depth == 0) return i;
    }
    return std::string_view::npos;
}

/// \returns where the list of template arguments begins that ends in front of `end`, or `end` when none does.
Position argumentsBefore(Position begin, Position end) {
    int depth = 0;
    for (Position at = end; at != begin;) {
        --at;
        depth += *at == ">" ? 1 : *at == "<" ? -1 : 0;
        if (depth == 0) return *at == "<" ? at : end;
    }
    return end;
}

/// \returns where the qualified name begins that the tokens end with; in front of it stand words such as
/// `static` and the type of the result.
Position nameIn(Tokens const& tokens) {
    Position at = argumentsBefore(tokens.begin(), tokens.end());
    if (at != tokens.begin()) --at;
    auto const isOperator = std::find(tokens.rbegin(), tokens.rend(), "operator");
    if (isOperator != tokens.rend()) at = isOperator.base() - 1;
    if (at != tokens.begin() && *(at - 1) == "~") --at;
    while (at != tokens.begin() && *(at - 1) == "::") {
        --at;
        at = argumentsBefore(tokens.begin(), at);
        if (at != tokens.begin() && isWordCharacter((at - 1)->front())) --at;
    }
    return at;
}

bool isEndOfName(std::string const& end, std::string const& name) {
    if (!name.ends_with(end)) return false;
    std::size_t const outer = name.size() - end.size();
    return outer == 0 || (outer >= 2 && name.compare(outer - 2, 2, "::") == 0);
}

/// \returns a qualified name without the template arguments in it: `A::f` for `A<int>::f<B<C>>`.
std::string withoutArguments(std::string const& name) {
    static constexpr std::string_view word = "operator";
    std::string out;
    int depth = 0;
    for (std::size_t i = 0; i < name.size(); ++i) {
        bool const isOperator =
            depth == 0 && out.ends_with(word) && (name[i] == '<' || name[i] == '-' || name[i] == '>');
        if (isOperator) { // the name of the operator itself, as in operator<< or operator->
            std::size_t const end = std::min(name.find_first_not_of("<>=-*", i), name.size());
            out.append(name, i, end - i);
            i = end - 1;
        } else if (name[i] == '<') {
            ++depth;
        } else if (name[i] == '>' && depth > 0) {
            --depth;
        } else if (depth == 0) {
            out += name[i];
        }
    }
    return out;
}

} // namespace

NameEnds::NameEnds(std::vector<std::string> inlineNamespaces)
    : inlineNamespaces_(std::move(inlineNamespaces)) {
    std::sort(inlineNamespaces_.begin(), inlineNamespaces_.end(),
              [](auto const& a, auto const& b) { return a.size() > b.size(); });
}

bool NameEnds::fit(std::string const& end, std::string const& name) const {
    if (isEndOfName(end, name) || isEndOfName(end, withoutArguments(name))) return true;
    std::string shorter = name;
    for (std::string const& space : inlineNamespaces_)
        if (shorter.starts_with(space + "::")) {
            std::size_t const outer = space.rfind("::");
            std::size_t const begin = outer == std::string::npos ? 0 : outer + 2;
            shorter.erase(begin, space.size() + 2 - begin);
        }
    return shorter.size() != name.size() &&
           (isEndOfName(end, shorter) || isEndOfName(end, withoutArguments(shorter)));
}

std::optional<SignaturePattern> SignaturePattern::of(std::string const& word) {
    Tokens tokens = tokensOf(word);
    SignaturePattern pattern;
    pattern.whole_ = joined(tokens);
    pattern.isConst_ = tokens.size() > 1 && tokens.back() == "const";
    if (pattern.isConst_) tokens.pop_back();
    if (tokens.empty() || tokens.back() != ")") return std::nullopt;
    std::string const text = joined(tokens);
    std::size_t const opening = openingOf(text);
    if (opening == std::string::npos || opening == 0) return std::nullopt;
    Tokens const declared = tokensOf(std::string_view(text).substr(0, opening));
    pattern.name_ = joined(Tokens(nameIn(declared), declared.end()));
    pattern.types_ = comparable(std::string_view(text).substr(opening + 1, text.size() - opening - 2));
    return pattern;
}

bool SignaturePattern::fits(za::Function const& function, NameEnds const& ends, bool skipScopes) const {
    if (whole_.find(joined(tokensOf(function.getName()))) == std::string::npos) return false;
    auto const method = za::types::Method::cast(function);
    auto const haveTypes = [&](bool skipTypedefs, bool withNames) {
        std::string const types = parameterList(function, skipTypedefs, withNames);
        return skipScopes ? withoutScopes(types) == withoutScopes(types_) : types == types_;
    };
    if (ends.fit(name_, joined(tokensOf(function.getFullyQualifiedName()))) &&
        (!isConst_ || (method && method.getIsThisConst())) &&
        (haveTypes(false, false) || haveTypes(true, false) || haveTypes(false, true)))
        return true;
    return joined(tokensOf(function.generateSignature())) == whole_;
}

} // namespace zelkor::command
