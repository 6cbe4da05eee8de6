// Types of the model against those of the front end, both followed part by part.
#include "ClangText.hpp"
#include "FrontEndWalk.hpp"

#include <algorithm>

namespace zelkor::producer::test {

namespace za = zelkor::ast;
namespace types = zelkor::ast::types;

namespace {

constexpr unsigned deepest = 200;

bool agreesInteger(types::Type const& type, CXTypeKind kind) {
    struct Row {
        CXTypeKind from;
        types::IntegerKind kind;
        bool isSigned;
    };
    using enum types::IntegerKind;
    static constexpr Row rows[] = {{CXType_Char_S, Char, true},
                                   {CXType_Char_U, Char, false},
                                   {CXType_SChar, SignedChar, true},
                                   {CXType_UChar, UnsignedChar, false},
                                   {CXType_Short, SignedShort, true},
                                   {CXType_UShort, UnsignedShort, false},
                                   {CXType_Int, SignedInt, true},
                                   {CXType_UInt, UnsignedInt, false},
                                   {CXType_Long, SignedLong, true},
                                   {CXType_ULong, UnsignedLong, false},
                                   {CXType_LongLong, SignedLongLong, true},
                                   {CXType_ULongLong, UnsignedLongLong, false},
                                   {CXType_Int128, SignedInt128, true},
                                   {CXType_UInt128, UnsignedInt128, false},
                                   {CXType_Char16, Char16, false},
                                   {CXType_Char32, Char32, false},
                                   {CXType_WChar, Wchar, true}};
    auto const integer = types::IntegerType::cast(type);
    return integer && std::any_of(std::begin(rows), std::end(rows), [&](Row const& row) {
               return row.from == kind && row.kind == integer.getKind() &&
                      row.isSigned == integer.getIsSigned();
           });
}

bool agreesFloat(types::Type const& type, CXTypeKind kind) {
    auto const floating = types::FloatType::cast(type);
    if (!floating) return false;
    types::FloatKind const made = floating.getKind();
    return (kind == CXType_Float && made == types::FloatKind::Single) ||
           (kind == CXType_Double && made == types::FloatKind::Double) ||
           (kind == CXType_LongDouble && made == types::FloatKind::LongDouble) ||
           (kind == CXType_Float128 && made == types::FloatKind::Float128) ||
           ((kind == CXType_Half || kind == CXType_Float16) && made == types::FloatKind::Half);
}

// "vector" of "std::vector<ns::A>".
std::string lastName(std::string const& text) {
    std::string const name = text.substr(0, text.find('<'));
    std::size_t const colon = name.rfind("::");
    return colon == std::string::npos ? name : name.substr(colon + 2);
}

template <class Layer>
types::Type inner(types::Type const& type) {
    auto const layer = Layer::cast(type);
    return layer ? layer.getType() : types::Type();
}

} // namespace

void FrontEndWalk::expectType(CXCursor cursor, types::Type const& type, CXType expected,
                              std::string const& what) {
    expect(agrees(type, expected, 0), cursor, what + ' ' + take(clang_getTypeSpelling(expected)));
}

bool FrontEndWalk::agrees(types::Type const& type, CXType expected, unsigned depth) const {
    if (expected.kind == CXType_Invalid) return !type;
    if (!type || depth > deepest) return false;
    ++depth;
    bool const isArray = expected.kind == CXType_ConstantArray || expected.kind == CXType_IncompleteArray ||
                         expected.kind == CXType_VariableArray || expected.kind == CXType_DependentSizedArray;
    // Without any of its own the front end would take off those of what `auto` stands for.
    bool const isQualified = clang_isConstQualifiedType(expected) ||
                             clang_isVolatileQualifiedType(expected) ||
                             clang_isRestrictQualifiedType(expected);
    CXType const plain = isArray || !isQualified ? expected : clang_getUnqualifiedType(expected);
    if (plain.data[0] != expected.data[0]) {
        auto const qualified = types::QualifiedType::cast(type);
        return qualified && qualified.getIsConst() == (clang_isConstQualifiedType(expected) != 0) &&
               qualified.getIsVolatile() == (clang_isVolatileQualifiedType(expected) != 0) &&
               qualified.getIsRestrict() == (clang_isRestrictQualifiedType(expected) != 0) &&
               agrees(qualified.getType(), plain, depth);
    }
    switch (expected.kind) {
    case CXType_Elaborated:
        return agrees(type, clang_Type_getNamedType(expected), depth);
    case CXType_Auto: {
        CXType const deduced = clang_getCanonicalType(expected);
        if (deduced.kind == CXType_Auto) return static_cast<bool>(types::OpaqueType::cast(type));
        return agrees(type, deduced, depth);
    }
    case CXType_Void:
        return static_cast<bool>(types::VoidType::cast(type));
    case CXType_Bool:
        return static_cast<bool>(types::BooleanType::cast(type));
    case CXType_NullPtr:
        return static_cast<bool>(types::NullPtrType::cast(type));
    case CXType_Vector:
    case CXType_ExtVector: {
        auto const vector = types::VectorType::cast(type);
        return vector && vector.getWidth() == clang_getNumElements(expected) &&
               agrees(vector.getType(), clang_getElementType(expected), depth);
    }
    case CXType_ConstantArray:
    case CXType_IncompleteArray:
    case CXType_VariableArray:
    case CXType_DependentSizedArray:
        return agreesArray(type, expected, depth);
    case CXType_FunctionProto:
    case CXType_FunctionNoProto: {
        auto const function = types::FunctionType::cast(type);
        return function && agreesFunction(function, expected, true, depth);
    }
    case CXType_Record:
    case CXType_Enum:
    case CXType_Typedef:
        return agreesDeclared(type, expected);
    case CXType_Unexposed:
        return agreesUnexposed(type, expected, depth);
    default:
        return agreesInteger(type, expected.kind) || agreesFloat(type, expected.kind) ||
               agreesLayer(type, expected, depth) || static_cast<bool>(types::OpaqueType::cast(type));
    }
}

bool FrontEndWalk::agreesLayer(types::Type const& type, CXType expected, unsigned depth) const {
    switch (expected.kind) {
    case CXType_Pointer:
        return agrees(inner<types::PointerType>(type), clang_getPointeeType(expected), depth);
    case CXType_LValueReference:
        return agrees(inner<types::LValueReferenceType>(type), clang_getPointeeType(expected), depth);
    case CXType_RValueReference:
        return agrees(inner<types::RValueReferenceType>(type), clang_getPointeeType(expected), depth);
    case CXType_MemberPointer:
        return agrees(inner<types::PointerToMemberType>(type), clang_getPointeeType(expected), depth);
    case CXType_Complex:
        return agrees(inner<types::TypeAttrType>(type), clang_getElementType(expected), depth);
    case CXType_Atomic:
        return agrees(inner<types::TypeAttrType>(type), clang_Type_getValueType(expected), depth);
    case CXType_Attributed:
        return agrees(type, clang_Type_getModifiedType(expected), depth) ||
               agrees(inner<types::TypeAttrType>(type), clang_Type_getModifiedType(expected), depth);
    default:
        return false;
    }
}

bool FrontEndWalk::agreesArray(types::Type const& type, CXType expected, unsigned depth) const {
    auto const array = types::ArrayType::cast(type);
    if (!array) return false;
    CXType element = expected;
    for (std::int32_t const extent : array.getDimensions()) {
        long long const size = element.kind == CXType_ConstantArray ? clang_getArraySize(element) : 0;
        if (std::max<long long>(extent, 0) != size) return false;
        element = clang_getArrayElementType(element);
    }
    return agrees(array.getType(), element, depth);
}

bool FrontEndWalk::agreesDeclared(types::Type const& type, CXType expected) const {
    bool const isRightClass =
        expected.kind == CXType_Record ? static_cast<bool>(types::AggregateType::cast(type))
        : expected.kind == CXType_Enum ? static_cast<bool>(types::EnumType::cast(type))
                                       : static_cast<bool>(types::TypedefType::cast(type));
    CXCursor const declaration = clang_getTypeDeclaration(expected);
    std::string name = take(clang_getCursorSpelling(declaration));
    if (clang_Cursor_isAnonymous(declaration) || name.starts_with('(')) name.clear();
    int const arguments = clang_Type_getNumTemplateArguments(clang_getCursorType(declaration));
    auto const aggregate = types::AggregateType::cast(type);
    bool const hasArguments = !aggregate || arguments < 0 || aggregate.hasTemplateArgs();
    Place place;
    bool const isPlaced = placeOf(declaration, place);
    std::vector<za::Symbol> const& there = index_.at(place);
    // C may repeat a typedef, and of those in foreign headers the model has one place.
    bool const isRepeatable = clang_getCursorKind(declaration) == CXCursor_TypedefDecl && !isInProject(place);
    bool const isThere = !isPlaced || isRepeatable ||
                         std::any_of(there.begin(), there.end(),
                                     [&](za::Symbol const& symbol) { return symbol.get() == type.get(); });
    return isRightClass && type.getName() == name && hasArguments && isThere;
}

bool FrontEndWalk::agreesFunction(types::FunctionType const& type, CXType expected, bool hasResult,
                                  unsigned depth) const {
    int const count = std::max(clang_getNumArgTypes(expected), 0);
    if (static_cast<std::size_t>(count) != type.getParamTypes().size()) return false;
    for (int i = 0; i < count; ++i) {
        CXType const parameter = clang_getArgType(expected, static_cast<unsigned>(i));
        if (!agrees(type.getParamTypes()[static_cast<std::size_t>(i)], parameter, depth)) return false;
    }
    bool const isVariadic =
        expected.kind == CXType_FunctionProto && clang_isFunctionTypeVariadic(expected) != 0;
    if (type.getIsVariadic() != isVariadic) return false;
    return hasResult ? agrees(type.getRetType(), clang_getResultType(expected), depth) : !type.getRetType();
}

bool FrontEndWalk::agreesUnexposed(types::Type const& type, CXType expected, unsigned depth) const {
    CXType const canonical = clang_getCanonicalType(expected);
    std::string const text = take(clang_getTypeSpelling(expected));
    std::string const canonicalText = take(clang_getTypeSpelling(canonical));
    // The name may be that of another declaration of the template.
    if (canonicalText.starts_with("type-parameter-") &&
        canonicalText.find_first_not_of("0123456789-", 15) == std::string::npos) {
        return static_cast<bool>(types::TemplateParamType::cast(type)) ||
               static_cast<bool>(types::OpaqueType::cast(type));
    }
    if (text.ends_with("...")) return true;
    if (auto const op = types::TypeOpType::cast(type)) {
        if (canonical.kind == CXType_Unexposed)
            return static_cast<bool>(types::OpaqueType::cast(op.getType()));
        return agrees(op.getType(), canonical, depth);
    }
    if (canonical.kind != CXType_Unexposed) {
        types::Type behind = type;
        while (auto const alias = types::TypedefType::cast(behind))
            behind = alias.getType();
        // Only what the source names by another name may be called otherwise than what it is.
        bool const isNamed = type.getName() == lastName(text) || (behind == type && text == canonicalText);
        return isNamed && agrees(behind, canonical, depth);
    }
    if (auto const opaque = types::OpaqueType::cast(type)) return opaque.getName() == text;
    std::string const name = take(clang_getCursorSpelling(clang_getTypeDeclaration(expected)));
    return (types::AggregateType::cast(type) || types::TypedefType::cast(type)) && type.getName() == name;
}

} // namespace zelkor::producer::test
