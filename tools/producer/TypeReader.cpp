#include "TypeReader.hpp"

#include "DeclarationReader.hpp"

#include <boost/uuid/uuid_io.hpp>

#include <algorithm>
#include <charconv>
#include <limits>

namespace zelkor::producer {

struct TypeReader::ScalarRow {
    CXTypeKind from;
    TypeKind kind;
    IntegerKind integer;
    bool isSigned;
    FloatKind floating;

    static ScalarRow const* find(CXTypeKind from);
};

TypeReader::ScalarRow const* TypeReader::ScalarRow::find(CXTypeKind from) {
    // The signedness of plain char is the front end's; that of wchar_t is the target's.
    static constexpr ScalarRow rows[] = {
        {CXType_Void, TypeKind::Void, {}, false, {}},
        {CXType_Bool, TypeKind::Bool, {}, false, {}},
        {CXType_NullPtr, TypeKind::NullPtr, {}, false, {}},
        {CXType_Char_U, TypeKind::Integer, IntegerKind::Char, false, {}},
        {CXType_Char_S, TypeKind::Integer, IntegerKind::Char, true, {}},
        {CXType_SChar, TypeKind::Integer, IntegerKind::SignedChar, true, {}},
        {CXType_UChar, TypeKind::Integer, IntegerKind::UnsignedChar, false, {}},
        {CXType_Short, TypeKind::Integer, IntegerKind::Short, true, {}},
        {CXType_UShort, TypeKind::Integer, IntegerKind::UnsignedShort, false, {}},
        {CXType_Int, TypeKind::Integer, IntegerKind::Int, true, {}},
        {CXType_UInt, TypeKind::Integer, IntegerKind::UnsignedInt, false, {}},
        {CXType_Long, TypeKind::Integer, IntegerKind::Long, true, {}},
        {CXType_ULong, TypeKind::Integer, IntegerKind::UnsignedLong, false, {}},
        {CXType_LongLong, TypeKind::Integer, IntegerKind::LongLong, true, {}},
        {CXType_ULongLong, TypeKind::Integer, IntegerKind::UnsignedLongLong, false, {}},
        {CXType_Int128, TypeKind::Integer, IntegerKind::Int128, true, {}},
        {CXType_UInt128, TypeKind::Integer, IntegerKind::UnsignedInt128, false, {}},
        {CXType_WChar, TypeKind::Integer, IntegerKind::Wchar, true, {}},
        {CXType_Char16, TypeKind::Integer, IntegerKind::Char16, false, {}},
        {CXType_Char32, TypeKind::Integer, IntegerKind::Char32, false, {}},
        {CXType_Half, TypeKind::Float, {}, true, FloatKind::Half},
        {CXType_Float16, TypeKind::Float, {}, true, FloatKind::Half},
        {CXType_Float, TypeKind::Float, {}, true, FloatKind::Single},
        {CXType_Double, TypeKind::Float, {}, true, FloatKind::Double},
        {CXType_LongDouble, TypeKind::Float, {}, true, FloatKind::LongDouble},
        {CXType_Float128, TypeKind::Float, {}, true, FloatKind::Float128},
    };
    auto const row = std::find_if(std::begin(rows), std::end(rows),
                                  [from](ScalarRow const& candidate) { return candidate.from == from; });
    return row == std::end(rows) ? nullptr : row;
}

namespace {

constexpr unsigned deepestType = 400;

struct WordsRow {
    std::string_view words;
    CXTypeKind kind;
    unsigned TargetFacts::*bits;
};

// As mangled names are made readable.
constexpr WordsRow wordsRows[] = {
    {"void", CXType_Void, nullptr},
    {"bool", CXType_Bool, nullptr},
    {"decltype(nullptr)", CXType_NullPtr, nullptr},
    {"char", CXType_Char_S, &TargetFacts::charBits},
    {"signed char", CXType_SChar, &TargetFacts::charBits},
    {"unsigned char", CXType_UChar, &TargetFacts::charBits},
    {"short", CXType_Short, &TargetFacts::shortBits},
    {"unsigned short", CXType_UShort, &TargetFacts::shortBits},
    {"int", CXType_Int, &TargetFacts::intBits},
    {"unsigned int", CXType_UInt, &TargetFacts::intBits},
    {"long", CXType_Long, &TargetFacts::longBits},
    {"unsigned long", CXType_ULong, &TargetFacts::longBits},
    {"long long", CXType_LongLong, &TargetFacts::longLongBits},
    {"unsigned long long", CXType_ULongLong, &TargetFacts::longLongBits},
    {"float", CXType_Float, &TargetFacts::floatBits},
    {"double", CXType_Double, &TargetFacts::doubleBits},
    {"long double", CXType_LongDouble, &TargetFacts::longDoubleBits},
};

struct OperatorRow {
    std::string_view prefix;
    TypeOperator op;
};

// Spellings by which the front end's unexposed types can be told apart.
constexpr OperatorRow operatorRows[] = {
    {"decltype(", TypeOperator::DeclType},   {"typeof", TypeOperator::TypeOf},
    {"__typeof", TypeOperator::TypeOf},      {"__underlying_type(", TypeOperator::UnderlyingType},
    {"typeof_unqual", TypeOperator::TypeOf},
};

bool isUnsignedKind(IntegerKind kind) {
    return kind == IntegerKind::UnsignedChar || kind == IntegerKind::UnsignedShort ||
           kind == IntegerKind::UnsignedInt || kind == IntegerKind::UnsignedLong;
}

std::string keyOfId(Id const& id) {
    return boost::uuids::to_string(id);
}

bool consume(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

bool consumeBack(std::string_view& text, std::string_view suffix) {
    if (!text.ends_with(suffix)) return false;
    text.remove_suffix(suffix.size());
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return true;
}

bool consumeNumber(std::string_view& text, unsigned& number) {
    auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return true;
}

} // namespace

TypeReader::TypeReader(DeclarationReader& declarations, UnitFacts& facts)
    : declarations_(declarations), facts_(facts), aliases_(declarations.sources()) {}

Id TypeReader::read(CXType type, CXCursor context) {
    if (type.kind == CXType_Invalid) return Id{};
    Address const address{type.kind, type.data[0]};
    if (auto const known = memo_.find(address); known != memo_.end()) return known->second;
    if (depth_ >= deepestType) return opaque("/* too deep */", context, false);
    std::size_t const usesBefore = contextUses_;
    ++depth_;
    Id const id = build(type, context);
    --depth_;
    if (contextUses_ == usesBefore) memo_.emplace(address, id);
    return id;
}

Id TypeReader::readWithoutResult(CXType type, CXCursor context) {
    return buildFunction(type, context, false);
}

Id TypeReader::build(CXType type, CXCursor context) {
    bool const isConst = clang_isConstQualifiedType(type) != 0;
    bool const isVolatile = clang_isVolatileQualifiedType(type) != 0;
    bool const isRestrict = clang_isRestrictQualifiedType(type) != 0;
    bool const isArray = type.kind == CXType_ConstantArray || type.kind == CXType_IncompleteArray ||
                         type.kind == CXType_VariableArray || type.kind == CXType_DependentSizedArray;
    if (isArray || (!isConst && !isVolatile && !isRestrict)) return buildUnqualified(type, context);
    CXType const plain = clang_getUnqualifiedType(type);
    // A typedef of a const type stays qualified without its own qualifiers.
    if (plain.data[0] == type.data[0]) return buildUnqualified(type, context);
    return buildQualified(read(plain, context), isConst, isVolatile, isRestrict);
}

Id TypeReader::buildQualified(Id base, bool isConst, bool isVolatile, bool isRestrict) {
    TypeFact fact;
    fact.kind = TypeKind::Qualified;
    fact.base = base;
    fact.isConst = isConst;
    fact.isVolatile = isVolatile;
    fact.isRestrict = isRestrict;
    std::string key = "qualified:";
    key += isConst ? 'c' : '-';
    key += isVolatile ? 'v' : '-';
    key += isRestrict ? 'r' : '-';
    return add(std::move(fact), key + keyOfId(base));
}

Id TypeReader::buildUnqualified(CXType type, CXCursor context) {
    switch (type.kind) {
    case CXType_Record:
    case CXType_Enum:
    case CXType_Typedef: {
        Id const id = declarations_.refer(clang_getTypeDeclaration(type));
        return id.is_nil() ? opaque(toText(clang_getTypeSpelling(type)), context, false) : id;
    }
    case CXType_Elaborated: {
        CXType const named = clang_Type_getNamedType(type);
        return named.kind == CXType_Unexposed
                   ? buildUnexposed(named, context, toText(clang_getTypeSpelling(type)))
                   : read(named, context);
    }
    case CXType_Auto: {
        CXType const deduced = clang_getCanonicalType(type);
        return deduced.kind == CXType_Auto ? opaque("auto", context, false) : read(deduced, context);
    }
    case CXType_Complex:
        return buildAttribute(read(clang_getElementType(type), context), "_Complex");
    case CXType_Atomic:
        return buildAttribute(read(clang_Type_getValueType(type), context), "_Atomic");
    case CXType_Attributed: {
        static constexpr char const* nullability[] = {"_Nonnull", "_Nullable", "_Null_unspecified"};
        Id const base = read(clang_Type_getModifiedType(type), context);
        CXTypeNullabilityKind const kind = clang_Type_getNullability(type);
        return kind <= CXTypeNullability_Unspecified ? buildAttribute(base, nullability[kind]) : base;
    }
    case CXType_Unexposed:
        return buildUnexposed(type, context, toText(clang_getTypeSpelling(type)));
    default:
        return buildDerived(type, context);
    }
}

Id TypeReader::buildDerived(CXType type, CXCursor context) {
    switch (type.kind) {
    case CXType_Pointer:
    case CXType_BlockPointer:
    case CXType_ObjCObjectPointer:
        return buildDerivedFrom(TypeKind::Pointer, read(clang_getPointeeType(type), context));
    case CXType_LValueReference:
        return buildDerivedFrom(TypeKind::LValueReference, read(clang_getPointeeType(type), context));
    case CXType_RValueReference:
        return buildDerivedFrom(TypeKind::RValueReference, read(clang_getPointeeType(type), context));
    case CXType_MemberPointer: {
        TypeFact fact;
        fact.kind = TypeKind::MemberPointer;
        fact.base = read(clang_getPointeeType(type), context);
        Id const owner = read(clang_Type_getClassType(type), context);
        std::string const key = "member pointer:" + keyOfId(owner) + keyOfId(fact.base);
        return add(std::move(fact), key);
    }
    case CXType_ConstantArray:
    case CXType_IncompleteArray:
    case CXType_VariableArray:
    case CXType_DependentSizedArray:
        return buildArray(type, context);
    case CXType_Vector:
    case CXType_ExtVector: {
        TypeFact fact;
        fact.kind = TypeKind::Vector;
        fact.base = read(clang_getElementType(type), context);
        fact.extents.push_back(clang_getNumElements(type));
        std::string const key = "vector:" + std::to_string(fact.extents[0]) + ':' + keyOfId(fact.base);
        return add(std::move(fact), key);
    }
    case CXType_FunctionProto:
    case CXType_FunctionNoProto:
        return buildFunction(type, context, true);
    default:
        return buildScalar(type);
    }
}

Id TypeReader::buildDerivedFrom(TypeKind kind, Id base) {
    static constexpr char const* names[] = {"pointer:", "reference:", "rvalue reference:"};
    TypeFact fact;
    fact.kind = kind;
    fact.base = base;
    return add(std::move(fact),
               names[static_cast<int>(kind) - static_cast<int>(TypeKind::Pointer)] + keyOfId(base));
}

Id TypeReader::buildArray(CXType type, CXCursor context) {
    TypeFact fact;
    fact.kind = TypeKind::Array;
    std::string key = "array:";
    CXType element = type;
    while (true) {
        std::int64_t extent = 0;
        if (element.kind == CXType_ConstantArray) {
            extent =
                std::min<std::int64_t>(clang_getArraySize(element), std::numeric_limits<std::int32_t>::max());
        } else if (element.kind == CXType_VariableArray || element.kind == CXType_DependentSizedArray) {
            extent = -1;
        } else if (element.kind != CXType_IncompleteArray) {
            break;
        }
        fact.extents.push_back(extent);
        key += std::to_string(extent) + ',';
        element = clang_getArrayElementType(element);
    }
    fact.base = read(element, context);
    key += keyOfId(fact.base);
    return add(std::move(fact), key);
}

Id TypeReader::buildFunction(CXType type, CXCursor context, bool hasResult) {
    TypeFact fact;
    fact.kind = TypeKind::Function;
    if (hasResult) fact.base = read(clang_getResultType(type), context);
    fact.isVariadic = clang_isFunctionTypeVariadic(type) != 0 && type.kind == CXType_FunctionProto;
    std::string key = "function:" + keyOfId(fact.base);
    for (int i = 0, count = clang_getNumArgTypes(type); i < count; ++i) {
        fact.parameters.push_back(read(clang_getArgType(type, static_cast<unsigned>(i)), context));
        key += keyOfId(fact.parameters.back());
    }
    if (fact.isVariadic) key += "...";
    return add(std::move(fact), key);
}

Id TypeReader::buildUnexposed(CXType type, CXCursor context, std::string const& written) {
    CXType const canonical = clang_getCanonicalType(type);
    std::string const canonicalText = toText(clang_getTypeSpelling(canonical));
    if (Id const id = parameter(canonicalText, context); !id.is_nil()) return id;
    std::string const text = toText(clang_getTypeSpelling(type));
    if (Id const id = buildOperator(type, context, text); !id.is_nil()) return id;
    if (text.ends_with("...")) return readPackPattern(type, context);
    CXCursor const declaration = clang_getTypeDeclaration(type);
    CXCursorKind const kind = clang_getCursorKind(declaration);
    if (kind == CXCursor_ClassTemplate || kind == CXCursor_TypeAliasTemplateDecl) {
        ++contextUses_;
        return clang_Type_getNumTemplateArguments(type) >= 0
                   ? declarations_.referSpecialisation(declaration, type, context)
                   : declarations_.referPrototype(declaration);
    }
    if (canonical.kind != CXType_Unexposed) return buildAlias(type, context, written);
    if (isRecordCursor(kind)) return declarations_.refer(declaration);
    return opaque(text, context, true);
}

// What has a structure behind it: an alias keeps its name, the rest is what it stands for.
Id TypeReader::buildAlias(CXType type, CXCursor context, std::string const& written) {
    CXCursor const alias = aliases_.find(type, written);
    if (clang_Cursor_isNull(alias)) return read(clang_getCanonicalType(type), context);
    return clang_getCursorKind(alias) == CXCursor_TypeAliasTemplateDecl
               ? declarations_.referSpecialisation(alias, type, context)
               : declarations_.refer(alias);
}

Id TypeReader::buildOperator(CXType type, CXCursor context, std::string const& text) {
    for (OperatorRow const& row : operatorRows) {
        if (!text.starts_with(row.prefix)) continue;
        CXType const canonical = clang_getCanonicalType(type);
        TypeFact fact;
        fact.kind = TypeKind::TypeOperator;
        fact.op = row.op;
        fact.base =
            canonical.kind == CXType_Unexposed ? opaque(text, context, true) : read(canonical, context);
        std::string const key =
            "operator:" + std::to_string(static_cast<int>(row.op)) + ':' + keyOfId(fact.base);
        return add(std::move(fact), key);
    }
    return Id{};
}

Id TypeReader::buildAttribute(Id base, std::string attribute) {
    TypeFact fact;
    fact.kind = TypeKind::Attribute;
    fact.base = base;
    std::string const key = "attribute:" + attribute + ':' + keyOfId(base);
    fact.attributes.push_back(std::move(attribute));
    return add(std::move(fact), key);
}

Id TypeReader::buildScalar(CXType type) {
    ScalarRow const* const row = ScalarRow::find(type.kind);
    // The front end crashes when it is asked for the size of some other types.
    bool const hasSize = row && (row->kind == TypeKind::Integer || row->kind == TypeKind::Float);
    long long const size = hasSize ? clang_Type_getSizeOf(type) : 0;
    if (row) return addScalar(*row, size > 0 ? static_cast<unsigned>(size) * facts_.target.charBits : 0);
    TypeFact fact;
    fact.name = toText(clang_getTypeSpelling(type));
    std::string const key = "opaque:" + fact.name;
    return add(std::move(fact), key);
}

Id TypeReader::addScalar(ScalarRow const& row, unsigned bits) {
    TypeFact fact;
    fact.kind = row.kind;
    fact.integer = row.integer;
    fact.floating = row.floating;
    fact.isSigned = row.isSigned;
    if (row.from == CXType_WChar) fact.isSigned = !isUnsignedKind(facts_.target.wcharType);
    fact.bits = bits;
    return add(std::move(fact),
               "scalar:" + std::to_string(static_cast<int>(row.from)) + ':' + std::to_string(fact.bits));
}

Id TypeReader::scalarNamed(std::string_view words) {
    for (WordsRow const& row : wordsRows) {
        if (row.words != words) continue;
        bool const isPlainChar = row.kind == CXType_Char_S && !facts_.target.charIsSigned;
        return addScalar(*ScalarRow::find(isPlainChar ? CXType_Char_U : row.kind),
                         row.bits ? facts_.target.*row.bits : 0);
    }
    return Id{};
}

Id TypeReader::readMangled(std::string_view text, CXCursor context) {
    return buildLayers(text, [&](std::string_view name) {
        Id id = scalarNamed(name);
        if (id.is_nil()) id = declarations_.typeNamed(name);
        return id.is_nil() ? opaque(std::string(name), context, false) : id;
    });
}

Id TypeReader::readPackPattern(CXType type, CXCursor context) {
    std::string const canonicalText = toText(clang_getTypeSpelling(clang_getCanonicalType(type)));
    std::string_view pattern = canonicalText;
    if (!consumeBack(pattern, "...")) return read(type, context);
    // The front end keeps the pattern of a pack expansion to itself, so that the common ones are read from
    // their canonical text: a parameter, qualified, and references and pointers to it.
    auto const leaf = [&](std::string_view name) { return parameter(std::string(name), context); };
    if (Id const id = buildLayers(pattern, leaf); !id.is_nil()) return id;
    return opaque(toText(clang_getTypeSpelling(type)), context, true);
}

// Pointers, references and qualifiers around the innermost name of a text; nothing where that is nothing.
Id TypeReader::buildLayers(std::string_view text, Leaf const& leaf) {
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    struct Layer {
        std::string_view suffix;
        TypeKind kind;
    };
    static constexpr Layer layers[] = {
        {"&&", TypeKind::RValueReference}, {"&", TypeKind::LValueReference}, {"*", TypeKind::Pointer}};
    for (Layer const& layer : layers) {
        std::string_view inner = text;
        if (!consumeBack(inner, layer.suffix)) continue;
        Id const base = buildLayers(inner, leaf);
        return base.is_nil() ? base : buildDerivedFrom(layer.kind, base);
    }
    std::string_view inner = text;
    bool isConst = consume(inner, "const ");
    bool const isVolatile = consumeBack(inner, " volatile");
    isConst |= consumeBack(inner, " const");
    if (isConst || isVolatile) {
        Id const base = buildLayers(inner, leaf);
        return base.is_nil() ? base : buildQualified(base, isConst, isVolatile, false);
    }
    return leaf(text);
}

Id TypeReader::parameter(std::string const& canonicalText, CXCursor context) {
    std::string_view text = canonicalText;
    unsigned depth = 0;
    unsigned index = 0;
    bool const isParameter = consume(text, "type-parameter-") && consumeNumber(text, depth) &&
                             consume(text, "-") && consumeNumber(text, index) && text.empty();
    if (!isParameter) return Id{};
    ++contextUses_;
    // The depth counts templates from the outside; the declaration knows those around it from the inside.
    std::vector<CXCursor> templates;
    for (CXCursor cursor = context;
         !clang_Cursor_isNull(cursor) && !clang_isInvalid(clang_getCursorKind(cursor));
         cursor = clang_getCursorSemanticParent(cursor)) {
        CXCursorKind const kind = clang_getCursorKind(cursor);
        if (isTemplateCursor(kind)) templates.push_back(cursor);
        if (kind == CXCursor_TranslationUnit) break;
    }
    if (depth >= templates.size()) return Id{};
    return declarations_.referParameter(templates[templates.size() - 1 - depth], index);
}

Id TypeReader::opaque(std::string const& text, CXCursor context, bool isDependent) {
    TypeFact fact;
    fact.name = declarations_.sources().paths().withoutRoot(text);
    std::string key = "opaque:" + fact.name;
    if (isDependent) {
        ++contextUses_;
        // Equal text means different types in different templates.
        for (CXCursor cursor = context; !clang_isInvalid(clang_getCursorKind(cursor));
             cursor = clang_getCursorSemanticParent(cursor)) {
            CXCursorKind const kind = clang_getCursorKind(cursor);
            if (kind == CXCursor_TranslationUnit) break;
            if (!isTemplateCursor(kind)) continue;
            key += keyOfId(declarations_.refer(cursor));
            break;
        }
    }
    return add(std::move(fact), key);
}

Id TypeReader::add(TypeFact&& fact, std::string const& key) {
    Id const id = makeId("type", key);
    if (known_.insert(id).second) {
        fact.id = id;
        facts_.types.push_back(std::move(fact));
    }
    return id;
}

} // namespace zelkor::producer
