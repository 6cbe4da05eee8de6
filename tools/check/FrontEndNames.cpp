// Qualified names and signatures of the model against the front end's own spelling: its mangled names, made
// readable, for names with all scopes, arguments and parameter types; its spelling of types for what a
// signature shows of them.
#include "ClangText.hpp"
#include "FrontEndWalk.hpp"
#include "Spelling.hpp"

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>

namespace zelkor::producer::test {

namespace za = zelkor::ast;
namespace types = zelkor::ast::types;

namespace {

bool isTemplate(CXCursor cursor) {
    CXCursorKind const kind = clang_getCursorKind(cursor);
    return kind == CXCursor_FunctionTemplate || kind == CXCursor_ClassTemplate ||
           kind == CXCursor_ClassTemplatePartialSpecialization;
}

std::string mangledName(CXCursor cursor) {
    CXCursorKind const kind = clang_getCursorKind(cursor);
    if (kind != CXCursor_Constructor && kind != CXCursor_Destructor)
        return take(clang_Cursor_getMangling(cursor));
    CXStringSet* const all = clang_Cursor_getCXXManglings(cursor);
    if (all == nullptr) return {};
    std::string name = all->Count == 0 ? "" : clang_getCString(all->Strings[0]);
    clang_disposeStringSet(all);
    return name;
}

std::string readable(std::string const& mangled) {
    int status = 0;
    char* const text = abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status);
    std::string result = status == 0 ? text : "";
    std::free(text);
    return result;
}

// Without the qualifiers that stand outermost, and that no caller sees.
types::Type passedType(types::Type type) {
    for (types::Type next = type; next;) {
        if (auto const qualified = types::QualifiedType::cast(next)) {
            next = type = qualified.getType();
        } else if (auto const alias = types::TypedefType::cast(next)) {
            next = alias.getType();
            // The model's texts do not expand an alias of `decltype`.
            auto const op = types::TypeOpType::cast(next);
            if (op && !types::NullPtrType::cast(op.getType())) next = type = op.getType();
        } else {
            break;
        }
    }
    return type;
}

// The name and the parameter types that a mangled name holds, with typedefs expanded as there.
std::string expandedText(za::Function const& function) {
    auto const type = types::FunctionType::cast(function.getType());
    std::string text = function.getFullyQualifiedName() + "(";
    std::string separator;
    if (type) {
        // The results of instances belong to their mangled names.
        if (function.getIsTemplate() && type.getRetType())
            text = types::Type::generateTypeName(type.getRetType(), "", true) + " " + text;
        for (types::Type const& parameter : type.getParamTypes()) {
            text += separator + types::Type::generateTypeName(passedType(parameter), "", true);
            separator = ", ";
        }
        if (type.getIsVariadic()) text += separator + "...";
    }
    text += ")";
    auto const method = types::Method::cast(function);
    return method && method.getIsThisConst() ? text + " const" : text;
}

// What the front end has no name for either is told by a marker, and so are templates as parameters.
std::string withoutWanted(std::string text, CXCursor cursor) {
    auto const eraseOne = [&](std::string const& marker) {
        std::size_t const at = text.find(marker);
        if (at != std::string::npos) text.erase(at, marker.size());
    };
    for (; !clang_isInvalid(clang_getCursorKind(cursor)); cursor = clang_getCursorSemanticParent(cursor)) {
        CXCursorKind const kind = clang_getCursorKind(cursor);
        bool const isRecord =
            kind == CXCursor_StructDecl || kind == CXCursor_ClassDecl || kind == CXCursor_UnionDecl;
        if (isRecord && plainName(cursor).empty()) eraseOne("#unnamed#");
        if (!isTemplate(cursor)) continue;
        for (CXCursor const& child : childrenOf(cursor))
            if (clang_getCursorKind(child) == CXCursor_TemplateTemplateParameter) eraseOne("#Unsupported#");
    }
    return text;
}

bool hasMarker(std::string const& text) {
    static char const* const markers[] = {"#unknown#",        "#unnamed#",       "#UnknownType#",
                                          "#UnknownAddress#", "#Unsupported#",   "#UnknownTemplateArgList#",
                                          "/* ErrorType */",  "/* OpaqueType */"};
    return std::any_of(std::begin(markers), std::end(markers),
                       [&](char const* marker) { return text.find(marker) != std::string::npos; });
}

} // namespace

// What depends on a template parameter has no mangled name.
bool isInTemplate(CXCursor cursor) {
    for (; !clang_isInvalid(clang_getCursorKind(cursor)); cursor = clang_getCursorSemanticParent(cursor))
        if (isTemplate(cursor)) return true;
    return false;
}

void FrontEndWalk::compareNames(CXCursor cursor, za::Function const& function) {
    std::string const signature = function.generateSignature();
    expect(!hasMarker(withoutWanted(signature, cursor)), cursor, "signature " + signature);
    compareQualifiedName(cursor, function);

    // A redeclaration may spell the types by other names; the definition's count.
    if (function.getDefPos() && !clang_isCursorDefinition(cursor)) return;
    auto const type = types::FunctionType::cast(function.getType());
    if (!type) return;
    auto const compare = [&](types::Type const& made, CXType written, char const* what) {
        std::string const ours = types::Type::generateTypeName(made, "", false);
        // The front end's interface hides the operand of `decltype`, so that the model tells the result.
        CXType const result = clang_getCanonicalType(written);
        bool const isOperator = types::TypeOpType::cast(made) && result.kind != CXType_Unexposed;
        std::string const theirs = take(clang_getTypeSpelling(isOperator ? result : written));
        ++tallies_["names of types"].declarations;
        bool const isSame = writtenSpelling(ours) == writtenSpelling(theirs);
        tallies_["names of types"].elements += isSame ? 1 : 0;
        expect(isSame, cursor, std::string(what) + ' ' + ours + ", not " + theirs);
    };
    CXType const written = clang_getCursorType(cursor);
    if (type.getRetType()) compare(type.getRetType(), clang_getResultType(written), "result");
    int const count = std::max(clang_getNumArgTypes(written), 0);
    for (int i = 0; i < count && static_cast<std::size_t>(i) < type.getParamTypes().size(); ++i)
        compare(type.getParamTypes()[static_cast<std::size_t>(i)],
                clang_getArgType(written, static_cast<unsigned>(i)), "parameter");
}

void FrontEndWalk::compareQualifiedName(CXCursor cursor, za::Function const& function) {
    if (isInTemplate(cursor)) {
        ++tallies_["names in templates"].declarations;
        std::string const theirs = writtenSpelling(ownerText(cursor) + plainName(cursor));
        bool const isSame = writtenSpelling(function.getFullyQualifiedName()) == theirs;
        tallies_["names in templates"].elements += isSame ? 1 : 0;
        return expect(isSame, cursor, "name " + function.getFullyQualifiedName());
    }
    std::string const mangled = mangledName(cursor);
    std::string theirs = mangled.starts_with("_Z") ? readable(mangled) : mangled;
    if (theirs.empty()) return;
    bool const isMangled = theirs != mangled;
    // Of what has the linkage of C the linker's name has no scopes.
    if (!isMangled) theirs = ownerText(cursor) + theirs;
    // The model has member functions of unions as functions, which cannot be const.
    bool const isInUnion = clang_getCursorKind(clang_getCursorSemanticParent(cursor)) == CXCursor_UnionDecl;
    if (isInUnion && theirs.ends_with(" const")) theirs.resize(theirs.rfind(" const"));
    std::string const ours = isMangled ? expandedText(function) : function.getFullyQualifiedName();
    ++tallies_["qualified names"].declarations;
    bool const isSame = fullSpelling(ours) == fullSpelling(theirs);
    tallies_["qualified names"].elements += isSame ? 1 : 0;
    expect(isSame, cursor, "name " + ours + ", not " + theirs);
}

} // namespace zelkor::producer::test
