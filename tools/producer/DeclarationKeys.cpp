// The keys of declarations: unified ids of the front end, and what tells apart declarations that share one.
#include "DeclarationReader.hpp"

#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <cctype>

namespace zelkor::producer {

namespace {

// Text without blanks, and with names in it by their numbers, which redeclarations may spell otherwise.
std::string commonForm(std::string_view text, std::vector<std::string> const& names) {
    std::string form;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const start = at;
        while (at < text.size() && isWordByte(text[at]))
            ++at;
        std::string_view const word = text.substr(start, at - start);
        auto const name = std::find(names.begin(), names.end(), word);
        if (word.empty()) {
            char const c = text[at++];
            if (!std::isspace(static_cast<unsigned char>(c))) form += c;
        } else if (name != names.end()) {
            form += '$' + std::to_string(name - names.begin());
        } else {
            form += form.empty() || !isWordByte(form.back()) ? "" : " ";
            form += word;
        }
    }
    return form;
}

// What is declared with one of these words takes any type.
bool isUnconstrained(std::string_view parameter) {
    auto const begins = [&](std::string_view word) {
        return parameter.starts_with(word) &&
               (parameter.size() == word.size() || !isWordByte(parameter[word.size()]));
    };
    return begins("typename") || begins("class");
}

bool endsInRequires(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.remove_suffix(1);
    std::string_view const word = "requires";
    if (!text.ends_with(word)) return false;
    text.remove_suffix(word.size());
    return text.empty() || !isWordByte(text.back());
}

// Something that a function declares and that other functions may declare by the same name. Variables of
// automatic storage are told by their places anyway, and what is `extern` is not the function's.
bool isLocal(CXCursor cursor) {
    CXCursorKind const kind = clang_getCursorKind(cursor);
    bool const isStatic = kind == CXCursor_VarDecl && clang_Cursor_getStorageClass(cursor) == CX_SC_Static;
    bool const isType = isRecordCursor(kind) || kind == CXCursor_EnumDecl || kind == CXCursor_TypedefDecl ||
                        kind == CXCursor_TypeAliasDecl;
    if (!isStatic && !isType) return false;
    CXCursorKind const scope = clang_getCursorKind(scopeOf(cursor));
    return isFunctionCursor(scope) || scope == CXCursor_FunctionTemplate;
}

// "c:@F@f#@S@L" of "c:file.cpp@123@F@f#@S@L".
std::string withoutOffset(std::string usr) {
    std::size_t const start = usr.find('@') + 1;
    std::size_t const end = usr.find('@', start);
    bool const hasOffset =
        end != std::string::npos && end > start && usr.find_first_not_of("0123456789", start) == end;
    return hasOffset ? "c:" + usr.substr(end) : usr;
}

// What an argument of a template is made of: pointers and the like taken off.
CXCursor declarationOfArgument(CXType type) {
    for (;;) {
        CXType inner = clang_getPointeeType(type);
        if (inner.kind == CXType_Invalid) inner = clang_getArrayElementType(type);
        if (inner.kind == CXType_Invalid) return clang_getTypeDeclaration(clang_getCanonicalType(type));
        type = inner;
    }
}

} // namespace

// The unified id of an instance names its arguments, but neither the file of what is internal to one nor
// which of the closures of a function is meant.
std::string DeclarationReader::localArgumentsOf(CXCursor cursor) {
    std::string arguments;
    auto const addLocal = [&](CXType type) {
        CXCursor const argument = declarationOfArgument(type);
        CXCursorKind const kind = clang_getCursorKind(argument);
        if (clang_isInvalid(kind) || kind == CXCursor_NoDeclFound) return;
        CXLinkageKind const linkage = clang_getCursorLinkage(argument);
        if (isNameless(argument) || linkage == CXLinkage_NoLinkage || linkage == CXLinkage_Internal)
            arguments.append("|").append(boost::uuids::to_string(identityOf(argument)));
    };
    int const count = clang_Cursor_getNumTemplateArguments(cursor);
    for (int i = 0; i < count; ++i) {
        unsigned const index = static_cast<unsigned>(i);
        if (clang_Cursor_getTemplateArgumentKind(cursor, index) == CXTemplateArgumentKind_Type)
            addLocal(clang_Cursor_getTemplateArgumentType(cursor, index));
    }
    // Of a member function template the arguments are not told; its parameters are made of most.
    bool const isMember = isFunctionCursor(clang_getCursorKind(cursor)) && count < 0 && isInRecord(cursor);
    if (!isMember || clang_Cursor_isNull(clang_getSpecializedCursorTemplate(cursor))) return arguments;
    for (int i = 0; i < clang_Cursor_getNumArguments(cursor); ++i)
        addLocal(clang_getCursorType(clang_Cursor_getArgument(cursor, static_cast<unsigned>(i))));
    return arguments;
}

// Overloads may differ in nothing but these, which the unified id leaves out.
std::string DeclarationReader::constraintsOf(CXCursor cursor) {
    bool const isTemplate = clang_getCursorKind(cursor) == CXCursor_FunctionTemplate;
    if (!isTemplate && !isTemplateCursor(clang_getCursorKind(scopeOf(cursor)))) return {};
    std::vector<std::string> names;
    for (CXCursor const& parameter : isTemplate ? ownParameterCursors(cursor) : std::vector<CXCursor>())
        names.push_back(nameOf(parameter));
    CXSourceLocation const start = clang_getRangeStart(clang_getCursorExtent(cursor));
    std::string constraints;
    visitChildren(cursor, [&](CXCursor child) {
        CXCursorKind const kind = clang_getCursorKind(child);
        std::string_view const text = sources_.text(clang_getCursorExtent(child));
        bool isConstraint = false;
        if (kind == CXCursor_TemplateTypeParameter) {
            isConstraint = !isUnconstrained(text);
        } else if (isExpressionKind(kind)) {
            CXSourceLocation const end = clang_getRangeStart(clang_getCursorExtent(child));
            isConstraint = endsInRequires(sources_.text(clang_getRange(start, end)));
        }
        if (isConstraint) constraints += '|' + commonForm(text, names);
        std::string const type =
            kind == CXCursor_ParmDecl ? toText(clang_getTypeSpelling(clang_getCursorType(child))) : "";
        if (type.find(" auto") != std::string::npos) constraints += '|' + commonForm(type, names);
        return CXChildVisit_Continue;
    });
    return constraints;
}

// Whether equal unified ids in it may mean several things: what has no name, an instance with arguments that
// are internal to a file, what a function declares, and all that is inside of these.
bool DeclarationReader::isAmbiguous(CXCursor scope) {
    CXCursorKind const kind = clang_getCursorKind(scope);
    if (clang_isInvalid(kind) || kind == CXCursor_TranslationUnit) return false;
    auto const known = ambiguous_.find(scope);
    if (known != ambiguous_.end()) return known->second;
    bool const mayPassOn = isRecordCursor(kind) || isFunctionCursor(kind) || isTemplateCursor(kind);
    bool const isIt = isNameless(scope) || isLocal(scope) || !localArgumentsOf(scope).empty() ||
                      (mayPassOn && isAmbiguous(clang_getCursorSemanticParent(scope)));
    ambiguous_.emplace(scope, isIt);
    return isIt;
}

std::string DeclarationReader::keyOf(CXCursor cursor) {
    CXCursor const canonical = clang_getCanonicalCursor(cursor);
    CXSourceLocation const location = clang_getCursorLocation(canonical);
    auto const place = [&] {
        FileInfo const* const file = sources_.fileOf(location);
        return file ? file->path : std::string();
    };
    std::string usr = toText(clang_getCursorUSR(canonical));
    CXCursor const scope = clang_getCursorSemanticParent(canonical);
    // The front end gives equal ids to all nameless things of a scope, and to equal names inside them. What a
    // function declares has the id of its name alone in one unit, and that of its place where the function is
    // not inline.
    bool const isPlaced = isNameless(canonical) || isLocal(canonical);
    bool const isIn = isPlaced || isAmbiguous(scope);
    std::string const outer = isIn ? boost::uuids::to_string(ownerKeyOf(scope)) + '|' : "";
    if (isPlaced || usr.empty() || usr == "c:") {
        // Where it begins; for what has no name the location itself is not the same in C and in C++.
        auto const position = sources_.position(clang_getRangeStart(clang_getCursorExtent(canonical)));
        return outer + place() + ':' +
               (position ? std::to_string(position->line) + ':' + std::to_string(position->column) : "") +
               '|' + toText(clang_getCursorKindSpelling(clang_getCursorKind(canonical))) + nameOf(canonical);
    }
    // Variables of automatic storage have nothing but their place.
    if (isIn && clang_getCursorKind(canonical) != CXCursor_VarDecl) {
        usr = withoutOffset(std::move(usr));
        std::string const around = withoutOffset(toText(clang_getCursorUSR(scope)));
        if (usr.starts_with(around)) usr.erase(0, around.size());
    }
    usr += localArgumentsOf(canonical);
    if (!outer.empty()) return outer + usr;
    bool const isLocalToFile = !usr.starts_with("c:@") || clang_Cursor_isAnonymous(canonical) ||
                               clang_getCursorLinkage(canonical) == CXLinkage_Internal;
    if (usr.find("@SP>") != std::string::npos || usr.find("@VP>") != std::string::npos) {
        // Partial specialisations that differ in constraints only have one id.
        auto const position = sources_.position(location);
        return place() + ':' +
               (position ? std::to_string(position->line) + ':' + std::to_string(position->column) : "") +
               '|' + usr;
    }
    usr += constraintsOf(canonical);
    return isLocalToFile ? place() + '|' + usr : usr;
}

} // namespace zelkor::producer
