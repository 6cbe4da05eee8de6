#include "AliasIndex.hpp"

#include "DeclarationReader.hpp"

#include <algorithm>

namespace zelkor::producer {

namespace {

// The part in front of template arguments, without what the language lets stand before a name.
std::string_view nameIn(std::string_view text) {
    for (std::string_view const prefix : {"typename ", "::"})
        if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
    return text.substr(0, text.find('<'));
}

std::string_view lastPart(std::string_view name) {
    std::size_t const colon = name.rfind("::");
    return colon == std::string_view::npos ? name : name.substr(colon + 2);
}

bool isTransparent(CXCursor space) {
    return clang_Cursor_isInlineNamespace(space) != 0 || nameOf(space).empty();
}

// In full, without the scopes that nobody writes.
std::string writableName(CXCursor declaration) {
    std::string name = nameOf(declaration);
    for (CXCursor scope = scopeOf(declaration); !clang_isInvalid(clang_getCursorKind(scope));
         scope = scopeOf(scope)) {
        CXCursorKind const kind = clang_getCursorKind(scope);
        if (kind == CXCursor_TranslationUnit) break;
        if (kind != CXCursor_Namespace || !isTransparent(scope)) name = nameOf(scope) + "::" + name;
    }
    return name;
}

// Whether a name in full may be written in this way.
bool isWrittenAs(std::string_view qualified, std::string_view written) {
    if (!qualified.ends_with(written)) return false;
    qualified.remove_suffix(written.size());
    return qualified.empty() || qualified.ends_with("::");
}

// The class template that each instance of an alias template is an instance of, if there is one.
CXCursor classBehind(CXCursor aliasTemplate) {
    CXCursor declaration = clang_getNullCursor();
    visitChildren(aliasTemplate, [&](CXCursor child) {
        if (clang_getCursorKind(child) != CXCursor_TypeAliasDecl) return CXChildVisit_Continue;
        declaration =
            clang_getTypeDeclaration(clang_getCanonicalType(clang_getTypedefDeclUnderlyingType(child)));
        return CXChildVisit_Break;
    });
    bool const isTemplate = clang_getCursorKind(declaration) == CXCursor_ClassTemplate;
    return isTemplate ? clang_getCanonicalCursor(declaration) : clang_getNullCursor();
}

} // namespace

CXCursor AliasIndex::find(CXType type, std::string const& written) {
    if (!isCollected_) collect(clang_getTranslationUnitCursor(sources_.unit()), "");
    isCollected_ = true;
    std::string const text = toText(clang_getTypeSpelling(type));
    std::string_view const name = nameIn(text);
    auto const found = entries_.find(lastPart(name));
    if (found == entries_.end()) return clang_getNullCursor();
    return name.size() == text.size() ? findTypedef(found->second, type, name)
                                      : findTemplate(found->second, type, nameIn(written));
}

// Two typedefs of one name may both stand for the type; then the front end's name of the target decides.
CXCursor AliasIndex::findTypedef(std::vector<Entry> const& entries, CXType type,
                                 std::string_view name) const {
    CXCursor found = clang_getNullCursor();
    for (Entry const& entry : entries) {
        CXType const aliased = clang_getCanonicalType(clang_getCursorType(entry.declaration));
        if (!clang_equalTypes(aliased, clang_getCanonicalType(type))) continue;
        if (writableName(entry.declaration) == name) return entry.declaration;
        if (clang_Cursor_isNull(found)) found = entry.declaration;
    }
    return found;
}

CXCursor AliasIndex::findTemplate(std::vector<Entry> const& entries, CXType type,
                                  std::string_view written) const {
    CXCursor const record = clang_getTypeDeclaration(type);
    bool const isRecord = isRecordCursor(clang_getCursorKind(record));
    CXCursor const pattern = isRecord ? clang_getCanonicalCursor(clang_getSpecializedCursorTemplate(record))
                                      : clang_getNullCursor();
    // A class and an alias of it may share a name, and then only qualifiers tell them apart.
    bool const sharesName = isRecord && nameOf(record) == lastPart(written);
    if (sharesName && isWrittenAs(writableName(record), written)) return clang_getNullCursor();
    CXCursor found = clang_getNullCursor();
    for (Entry const& entry : entries) {
        if (clang_getCursorKind(entry.declaration) != CXCursor_TypeAliasTemplateDecl) continue;
        CXCursor const target = classBehind(entry.declaration);
        if (!clang_Cursor_isNull(target) && !clang_equalCursors(target, pattern)) continue;
        if (isWrittenAs(entry.qualified, written)) return entry.declaration;
        // Through another name of a namespace.
        if (clang_Cursor_isNull(found) && !sharesName) found = entry.declaration;
    }
    return found;
}

void AliasIndex::collect(CXCursor scope, std::string const& path) {
    visitChildren(scope, [&](CXCursor child) {
        CXCursorKind const kind = clang_getCursorKind(child);
        if (kind == CXCursor_Namespace) {
            collect(child, isTransparent(child) ? path : path + nameOf(child) + "::");
        } else if (kind == CXCursor_LinkageSpec) {
            collect(child, path);
        } else if (kind == CXCursor_UsingDeclaration) {
            addTargets(child, path);
        } else if (kind == CXCursor_TypeAliasTemplateDecl) {
            std::string const name = nameOf(child);
            entries_[name].push_back({path + name, child});
        } else if ((isRecordCursor(kind) || kind == CXCursor_ClassTemplate) && sources_.inProject(child)) {
            collect(child, path + nameOf(child) + "::");
        }
        return CXChildVisit_Continue;
    });
}

void AliasIndex::addTargets(CXCursor usingDeclaration, std::string const& path) {
    CXCursor const targets = clang_getCursorReferenced(usingDeclaration);
    for (unsigned i = 0, count = clang_getNumOverloadedDecls(targets); i < count; ++i) {
        CXCursor const target = clang_getOverloadedDecl(targets, i);
        CXCursorKind const kind = clang_getCursorKind(target);
        if (kind != CXCursor_TypedefDecl && kind != CXCursor_TypeAliasDecl &&
            kind != CXCursor_TypeAliasTemplateDecl)
            continue;
        std::string const name = nameOf(target);
        entries_[name].push_back({path + name, target});
    }
}

} // namespace zelkor::producer
