// Aggregates, enumerations and templates of the model against the front end.
#include "ClangText.hpp"
#include "FrontEndWalk.hpp"

#include <brant/zero/meta/Names.hpp>

#include <algorithm>

namespace zelkor::producer::test {

namespace za = zelkor::ast;

bool isPrototype(za::Symbol const& symbol) {
    if (auto const function = za::Function::cast(symbol)) return function.getIsTemplatePrototype();
    if (auto const aggregate = za::types::AggregateType::cast(symbol))
        return aggregate.getIsTemplatePrototype();
    if (auto const type = za::types::TypedefType::cast(symbol)) return type.getIsPrototypeInstantiation();
    return false;
}

// The producer's own names for things that C++ has none for are empty, so are those of the front end here.
std::string plainName(CXCursor cursor) {
    std::string name = take(clang_getCursorSpelling(cursor));
    if (clang_Cursor_isAnonymous(cursor) || name.find(" at ") != std::string::npos) return {};
    CXCursorKind kind = clang_getCursorKind(cursor);
    if (kind == CXCursor_FunctionTemplate) kind = clang_getTemplateCursorKind(cursor);
    if (kind == CXCursor_Constructor || kind == CXCursor_Destructor) name = name.substr(0, name.find('<'));
    return name;
}

za::types::AccessSpecifierKind accessOf(CXCursor cursor) {
    switch (clang_getCXXAccessSpecifier(cursor)) {
    case CX_CXXPublic:
        return za::types::AccessSpecifierKind::Public;
    case CX_CXXProtected:
        return za::types::AccessSpecifierKind::Protected;
    case CX_CXXPrivate:
        return za::types::AccessSpecifierKind::Private;
    default:
        return za::types::AccessSpecifierKind::None;
    }
}

std::vector<CXCursor> childrenOf(CXCursor cursor) {
    std::vector<CXCursor> children;
    clang_visitChildren(
        cursor,
        [](CXCursor child, CXCursor, CXClientData data) {
            static_cast<std::vector<CXCursor>*>(data)->push_back(child);
            return CXChildVisit_Continue;
        },
        &children);
    return children;
}

void FrontEndWalk::compareAggregate(CXCursor cursor, za::types::AggregateType const& aggregate) {
    if (!clang_isCursorDefinition(cursor)) return;
    CXCursorKind kind = clang_getCursorKind(cursor);
    bool const isTemplate =
        kind == CXCursor_ClassTemplate || kind == CXCursor_ClassTemplatePartialSpecialization;
    if (isTemplate) kind = clang_getTemplateCursorKind(cursor);
    std::string const name = brant::zero::meta::qualifiedNameUtf8(aggregate.getMetaClass());
    std::string const expected = kind == CXCursor_StructDecl  ? "StructType"
                                 : kind == CXCursor_ClassDecl ? "ClassType"
                                                              : "UnionType";
    expect(name.ends_with(expected), cursor, "class " + name);
    expect(!aggregate.getIsIncomplete(), cursor, "IsIncomplete");
    std::vector<CXCursor> bases;
    std::size_t fields = 0;
    bool isFinal = false;
    for (CXCursor const& child : childrenOf(cursor)) {
        CXCursorKind const childKind = clang_getCursorKind(child);
        if (childKind == CXCursor_CXXBaseSpecifier) bases.push_back(child);
        // Templates do not show the members that anonymous unions stand for.
        bool const isAnonymous = clang_Cursor_isAnonymousRecordDecl(child) != 0;
        fields += childKind == CXCursor_FieldDecl || (isAnonymous && !isTemplate) ? 1 : 0;
        isFinal |= childKind == CXCursor_CXXFinalAttr;
    }
    // An explicit instantiation shows nothing of what it has.
    bool const isShown =
        bases.size() + fields > 0 || clang_Cursor_isNull(clang_getSpecializedCursorTemplate(cursor));
    if (!isShown) return;
    std::size_t members = 0;
    for (za::types::Member const member : aggregate.getMembers()) {
        members += member.getStorageClass() == za::StorageClassKind::Static ? 0 : 1;
    }
    expect(members == fields, cursor,
           "fields " + std::to_string(fields) + ", members " + std::to_string(members));
    auto const type = za::types::StructType::cast(aggregate);
    if (!type) return;
    expect(type.getIsFinal() == isFinal, cursor, "IsFinal");
    expect(type.getIsAbstract() == (clang_CXXRecord_isAbstract(cursor) != 0), cursor, "IsAbstract");
    expect(type.getBaseClasses().size() == bases.size(), cursor, "number of bases");
    for (std::size_t i = 0; i < std::min(bases.size(), type.getBaseClasses().size()); ++i) {
        za::types::BaseClass const base = type.getBaseClasses()[i];
        expectType(cursor, base.getType(), clang_getCursorType(bases[i]), "base");
        expect(base.getIsVirtual() == (clang_isVirtualBase(bases[i]) != 0), cursor, "IsVirtual of base");
        expect(base.getInheritance() == accessOf(bases[i]), cursor, "Inheritance of base");
    }
}

void FrontEndWalk::compareEnum(CXCursor cursor, za::types::EnumType const& type) {
    if (!clang_isCursorDefinition(cursor)) return;
    std::vector<std::string> names;
    std::vector<std::string> values;
    CXTypeKind const storage = clang_getCanonicalType(clang_getEnumDeclIntegerType(cursor)).kind;
    bool const isUnsigned = storage == CXType_Bool || storage == CXType_UChar || storage == CXType_UShort ||
                            storage == CXType_UInt || storage == CXType_ULong || storage == CXType_ULongLong;
    for (CXCursor const& child : childrenOf(cursor)) {
        if (clang_getCursorKind(child) != CXCursor_EnumConstantDecl) continue;
        names.push_back(plainName(child));
        values.push_back(isUnsigned ? std::to_string(clang_getEnumConstantDeclUnsignedValue(child))
                                    : std::to_string(clang_getEnumConstantDeclValue(child)));
    }
    expect(std::equal(names.begin(), names.end(), type.getStrings().begin(), type.getStrings().end()), cursor,
           "Strings");
    expect(std::equal(values.begin(), values.end(), type.getValues().begin(), type.getValues().end()), cursor,
           "Values");
    expect(type.getEnumeratorComments().size() == names.size(), cursor, "EnumeratorComments");
    expect(type.getIsScopedEnum() == (clang_EnumDecl_isScoped(cursor) != 0), cursor, "IsScopedEnum");
    expectType(cursor, type.getStorageType(), clang_getEnumDeclIntegerType(cursor), "StorageType");
}

void FrontEndWalk::compareTemplate(CXCursor cursor, za::Template const& made) {
    if (clang_getCursorKind(cursor) == CXCursor_UnexposedDecl) return;
    std::vector<std::string> names;
    for (CXCursor const& child : childrenOf(cursor)) {
        CXCursorKind const kind = clang_getCursorKind(child);
        bool const isParameter = kind == CXCursor_TemplateTypeParameter ||
                                 kind == CXCursor_NonTypeTemplateParameter ||
                                 kind == CXCursor_TemplateTemplateParameter;
        // The parameters of templates around, which a declaration outside repeats, belong to no template.
        CXCursorKind const parent = clang_getCursorKind(clang_getCursorSemanticParent(child));
        bool const isOwn = clang_getCursorKind(cursor) == CXCursor_TypeAliasTemplateDecl ||
                           (parent != CXCursor_TranslationUnit && parent != CXCursor_Namespace);
        if (!isParameter || !isOwn) continue;
        names.push_back(plainName(child));
        if (kind != CXCursor_TemplateTemplateParameter || !made.hasScope()) continue;
        for (za::Symbol const& held : made.getScope().getSymbols())
            if (za::Template::cast(held) && held.getName() == names.back()) found_.insert(held.get());
    }
    std::size_t const held =
        made.getScope() ? made.getScope().getSymbols().size() + made.getScope().getConstants().size() : 0;
    expect(held == names.size(), cursor, "number of template parameters " + std::to_string(names.size()));
    za::Symbol const prototype = made.getProtoTypeInstantiation();
    expect(static_cast<bool>(prototype) && isPrototype(prototype), cursor, "ProtoTypeInstantiation");
    if (!prototype) return;
    found_.insert(prototype.get());
    if (auto const function = za::Function::cast(prototype)) compareFunction(cursor, function);
    if (auto const aggregate = za::types::AggregateType::cast(prototype)) compareAggregate(cursor, aggregate);
}

} // namespace zelkor::producer::test
