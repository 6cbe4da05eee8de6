// What one cursor tells about namespaces, functions, variables, enumerations and typedefs.
#include "DeclarationReader.hpp"

#include <algorithm>
#include <iterator>

namespace zelkor::producer {

namespace {

StorageClass storageOf(CXCursor cursor) {
    switch (clang_Cursor_getStorageClass(cursor)) {
    case CX_SC_Extern:
    case CX_SC_PrivateExtern:
        return StorageClass::Extern;
    case CX_SC_Static:
        return StorageClass::Static;
    case CX_SC_Auto:
        return StorageClass::Auto;
    case CX_SC_Register:
        return StorageClass::Register;
    default:
        return StorageClass::None;
    }
}

Access accessOf(CXCursor cursor) {
    switch (clang_getCXXAccessSpecifier(cursor)) {
    case CX_CXXPublic:
        return Access::Public;
    case CX_CXXProtected:
        return Access::Protected;
    case CX_CXXPrivate:
        return Access::Private;
    default:
        return Access::None;
    }
}

SpecialFunction specialOf(CXCursor cursor, std::string const& name) {
    CXCursorKind kind = clang_getCursorKind(cursor);
    if (isTemplateCursor(kind)) kind = patternKind(cursor);
    switch (kind) {
    case CXCursor_Constructor:
        return clang_CXXConstructor_isCopyConstructor(cursor) ? SpecialFunction::CopyConstructor
                                                              : SpecialFunction::Constructor;
    case CXCursor_Destructor:
        return SpecialFunction::Destructor;
    case CXCursor_ConversionFunction:
        return SpecialFunction::Conversion;
    default:
        break;
    }
    std::string_view const word = "operator";
    if (name.starts_with("operator\"\"")) return SpecialFunction::UdlOperator;
    bool const isOperator =
        name.starts_with(word) && name.size() > word.size() && !isWordByte(name[word.size()]);
    return isOperator ? SpecialFunction::Operator : SpecialFunction::None;
}

// Walks text outside brackets, strings and comments; `test(text, at)` ends the walk with true.
template <class Test>
bool findAtTopLevel(std::string_view text, Test&& test) {
    int depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        char const c = text[at];
        if (c == '"' || c == '\'') {
            for (++at; at < text.size() && text[at] != c; ++at) {
                if (text[at] == '\\') ++at;
            }
        } else if (text.substr(at, 2) == "/*") {
            std::size_t const end = text.find("*/", at + 2);
            if (end == std::string_view::npos) return false;
            at = end + 1;
        } else if (text.substr(at, 2) == "//") {
            std::size_t const end = text.find('\n', at);
            if (end == std::string_view::npos) return false;
            at = end;
        } else if (c == '(' || c == '[' || c == '{') {
            ++depth;
        } else if (c == ')' || c == ']' || c == '}') {
            --depth;
        } else if (depth == 0 && test(text, at)) {
            return true;
        }
    }
    return false;
}

bool isAssignment(std::string_view text, std::size_t at) {
    if (text[at] != '=') return false;
    static constexpr std::string_view operators = "=<>!+-*/%&|^";
    bool const isLeftPart = at + 1 < text.size() && text[at + 1] == '=';
    bool const isRightPart = at > 0 && operators.find(text[at - 1]) != std::string_view::npos;
    // `vector<int>= x` does not occur in a declaration, while `vector<int> = x` does.
    return !isLeftPart && !isRightPart;
}

bool hasExplicitBase(std::string_view text) {
    return findAtTopLevel(text.substr(0, text.find('{')), [](std::string_view all, std::size_t at) {
        if (all[at] != ':') return false;
        return (at == 0 || all[at - 1] != ':') && (at + 1 >= all.size() || all[at + 1] != ':');
    });
}

std::optional<CXCursor> lastExpression(CXCursor cursor) {
    std::optional<CXCursor> last;
    visitChildren(cursor, [&](CXCursor child) {
        if (isExpressionKind(clang_getCursorKind(child))) last = child;
        return CXChildVisit_Continue;
    });
    return last;
}

bool isInC(CXCursor linkageBlock, SourceIndex& sources) {
    std::string_view const text = sources.text(clang_getCursorExtent(linkageBlock));
    return text.substr(0, text.find('{')).find("\"C\"") != std::string_view::npos;
}

} // namespace

bool isWordByte(char c) {
    return c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool hasTopLevelAssignment(std::string_view text) {
    return findAtTopLevel(text, isAssignment);
}

bool declaresPack(std::string_view text) {
    // The pack of a nested template parameter list is not that of the parameter.
    std::size_t const nested = text.rfind('>');
    if (text.starts_with("template") && nested != std::string_view::npos) text.remove_prefix(nested + 1);
    return findAtTopLevel(text,
                          [](std::string_view all, std::size_t at) { return all.substr(at, 3) == "..."; });
}

// They stand at their class; only calls lead to them.
bool isImplicitMember(CXCursor function) {
    CXCursor const scope = scopeOf(function);
    return isRecordCursor(clang_getCursorKind(scope)) && !isLambda(scope) &&
           clang_equalLocations(clang_getCursorLocation(scope), clang_getCursorLocation(function));
}

Entity DeclarationReader::describe(CXCursor cursor, EntityKind kind, bool asPrototype) {
    Entity entity;
    entity.kind = kind;
    describeCommon(entity, cursor);
    switch (kind) {
    case EntityKind::Namespace:
        describeNamespace(entity, cursor);
        break;
    case EntityKind::Function:
    case EntityKind::Method:
        describeFunction(entity, cursor);
        break;
    case EntityKind::Variable:
    case EntityKind::Member:
        describeVariable(entity, cursor);
        break;
    case EntityKind::Struct:
    case EntityKind::Class:
    case EntityKind::Union:
        describeRecord(entity, cursor);
        break;
    case EntityKind::Enum:
        describeEnum(entity, cursor);
        break;
    case EntityKind::Typedef:
        describeTypedef(entity, cursor);
        break;
    case EntityKind::Template:
        describeTemplate(entity, cursor);
        break;
    }
    if (kind != EntityKind::Namespace) describePlace(entity, cursor);
    if (asPrototype) describePrototype(entity, cursor);
    return entity;
}

void DeclarationReader::describeCommon(Entity& entity, CXCursor cursor) {
    entity.name = nameOf(cursor);
    entity.inProject = sources_.inProject(cursor);
    entity.owner = ownerOf(cursor);
    if (isInRecord(cursor)) entity.access = accessOf(cursor);
    entity.linkage = linkageOf(cursor);
    entity.isDefined = clang_isCursorDefinition(cursor) != 0;
    std::string comment = entity.inProject ? toText(clang_Cursor_getRawCommentText(cursor)) : std::string();
    if (!comment.empty()) entity.comments.push_back(std::move(comment));
}

void DeclarationReader::describePlace(Entity& entity, CXCursor cursor) {
    std::optional<Position> const position = sources_.position(cursor);
    if (!position) return;
    if (auto const extent = sources_.range(clang_getCursorExtent(cursor)))
        entity.extents.push_back({*position, *extent});
    if (entity.isDefined) {
        entity.definition = position;
    } else {
        entity.declarations.push_back(*position);
    }
}

Linkage DeclarationReader::linkageOf(CXCursor cursor) {
    switch (clang_getCursorLinkage(cursor)) {
    case CXLinkage_Internal:
    case CXLinkage_UniqueExternal:
        return Linkage::Internal;
    case CXLinkage_External:
        break;
    default:
        return Linkage::None;
    }
    if (!isCxx_) return Linkage::C;
    CXCursorKind const kind = clang_getCursorKind(cursor);
    if (kind == CXCursor_FunctionDecl) {
        // The id of a function with linkage of C has no parameters.
        std::string const usr = toText(clang_getCursorUSR(cursor));
        return usr.find('#') == std::string::npos ? Linkage::C : Linkage::Cxx;
    }
    if (kind == CXCursor_VarDecl) {
        CXCursor const canonical = clang_getCanonicalCursor(cursor);
        for (CXCursor scope = clang_getCursorSemanticParent(canonical);
             clang_getCursorKind(scope) == CXCursor_LinkageSpec;
             scope = clang_getCursorSemanticParent(scope)) {
            if (isInC(scope, sources_)) return Linkage::C;
        }
    }
    return Linkage::Cxx;
}

// `static` stands on the first declaration only.
void DeclarationReader::describeStorage(Entity& entity, CXCursor cursor) {
    entity.storage = storageOf(cursor);
    if (entity.storage != StorageClass::None) return;
    bool const isStatic = clang_CXXMethod_isStatic(cursor) != 0 ||
                          storageOf(clang_getCanonicalCursor(cursor)) == StorageClass::Static;
    if (isStatic) entity.storage = StorageClass::Static;
}

void DeclarationReader::describeNamespace(Entity& entity, CXCursor cursor) {
    NamespaceFacts facts;
    facts.isInline = clang_Cursor_isInlineNamespace(cursor) != 0;
    facts.isStd = entity.name == "std" && entity.owner.is_nil();
    if (clang_getCursorKind(cursor) == CXCursor_NamespaceAlias) {
        visitChildren(cursor, [&](CXCursor child) {
            // The last name of a nested one is what the alias stands for.
            if (clang_getCursorKind(child) == CXCursor_NamespaceRef)
                facts.alias = refer(clang_getCursorReferenced(child));
            return CXChildVisit_Continue;
        });
    }
    entity.isDefined = true;
    entity.detail = facts;
}

std::vector<CXCursor> DeclarationReader::parameterCursors(CXCursor cursor) {
    std::vector<CXCursor> parameters;
    int const count = clang_Cursor_getNumArguments(cursor);
    for (int i = 0; i < count; ++i)
        parameters.push_back(clang_Cursor_getArgument(cursor, static_cast<unsigned>(i)));
    if (count >= 0) return parameters;
    visitChildren(cursor, [&](CXCursor child) {
        bool const isOwn = clang_getCursorKind(child) == CXCursor_ParmDecl &&
                           clang_equalCursors(clang_getCursorSemanticParent(child), cursor);
        if (isOwn) parameters.push_back(child);
        return CXChildVisit_Continue;
    });
    return parameters;
}

void DeclarationReader::describeFunction(Entity& entity, CXCursor cursor) {
    FunctionFacts facts;
    facts.special = specialOf(cursor, entity.name);
    CXType const type = clang_getCursorType(cursor);
    bool const hasNoResult = facts.special == SpecialFunction::Constructor ||
                             facts.special == SpecialFunction::CopyConstructor ||
                             facts.special == SpecialFunction::Destructor;
    entity.type = hasNoResult ? types_.readWithoutResult(type, cursor) : types_.read(type, cursor);
    describeStorage(entity, cursor);
    for (CXCursor const& parameter : parameterCursors(cursor)) {
        bool isOptional = false;
        facts.parameters.push_back(describeParameter(parameter, cursor, isOptional));
        facts.optionalParameters += isOptional ? 1 : 0;
    }
    visitChildren(cursor, [&](CXCursor child) {
        CXCursorKind const kind = clang_getCursorKind(child);
        if (kind == CXCursor_CXXFinalAttr) facts.isFinal = true;
        if (kind == CXCursor_CompoundStmt || kind == CXCursor_CXXTryStmt) {
            facts.body = sources_.range(clang_getCursorExtent(child));
        }
        return CXChildVisit_Continue;
    });
    facts.isInline = clang_Cursor_isFunctionInlined(cursor) != 0;
    facts.isVariadic = clang_isFunctionTypeVariadic(type) != 0 && type.kind == CXType_FunctionProto;
    facts.isDeleted = clang_CXXMethod_isDeleted(cursor) != 0 ||
                      (clang_getCursorKind(cursor) == CXCursor_FunctionDecl &&
                       clang_getCursorAvailability(cursor) == CXAvailability_NotAvailable);
    facts.isVirtual = clang_CXXMethod_isVirtual(cursor) != 0;
    facts.isAbstract = clang_CXXMethod_isPureVirtual(cursor) != 0;
    facts.isThisConst = clang_CXXMethod_isConst(cursor) != 0;
    facts.isCompilerGenerated = isImplicitMember(cursor);
    if (facts.isCompilerGenerated) facts.body.reset();
    entity.detail = std::move(facts);
    if (!isTemplateCursor(clang_getCursorKind(cursor))) describeSpecialisation(entity, cursor);
}

ParameterFact DeclarationReader::describeParameter(CXCursor cursor, CXCursor function, bool& isOptional) {
    ParameterFact parameter;
    parameter.name = nameOf(cursor);
    parameter.position = sources_.position(cursor);
    parameter.storage = storageOf(cursor);
    CXType const type = clang_getCursorType(cursor);
    parameter.isPack = toText(clang_getTypeSpelling(type)).ends_with("...");
    parameter.type = parameter.isPack ? types_.readPackPattern(type, function) : types_.read(type, function);
    isOptional = hasTopLevelAssignment(sources_.text(clang_getCursorExtent(cursor)));
    if (isOptional && sources_.inProject(cursor)) {
        if (std::optional<CXCursor> const value = lastExpression(cursor)) {
            parameter.defaultValue = constants_.read(*value, cursor);
        }
    }
    return parameter;
}

void DeclarationReader::describeVariable(Entity& entity, CXCursor cursor) {
    VariableFacts facts;
    entity.type = types_.read(clang_getCursorType(cursor), cursor);
    describeStorage(entity, cursor);
    if (clang_getCursorKind(cursor) == CXCursor_FieldDecl) {
        facts.isMutable = clang_CXXField_isMutable(cursor) != 0;
        if (clang_Cursor_isBitField(cursor)) {
            facts.bits = static_cast<unsigned>(std::max(clang_getFieldDeclBitWidth(cursor), 0));
        }
        if (entity.inProject) facts.initialiser = fieldInitialiser(cursor);
        entity.isDefined = true;
    } else {
        CXCursor const value = clang_Cursor_getVarDeclInitializer(cursor);
        bool const hasValue = !clang_Cursor_isNull(value) && !clang_isInvalid(clang_getCursorKind(value));
        if (entity.inProject && hasValue) facts.initialiser = constants_.read(value, cursor);
        // To the front end a tentative definition of C and some locals are no definitions.
        facts.isTentative =
            !entity.isDefined && !isInRecord(cursor) && storageOf(cursor) != StorageClass::Extern;
        entity.isDefined |= facts.isTentative;
    }
    entity.detail = std::move(facts);
}

std::optional<ConstantFact> DeclarationReader::fieldInitialiser(CXCursor cursor) {
    std::optional<CXCursor> const value = lastExpression(cursor);
    if (!value) return std::nullopt;
    bool const isGiven = clang_getCursorKind(*value) == CXCursor_InitListExpr ||
                         hasTopLevelAssignment(sources_.text(clang_getCursorExtent(cursor)));
    if (!isGiven) return std::nullopt;
    return constants_.read(*value, cursor);
}

void DeclarationReader::describeEnum(Entity& entity, CXCursor cursor) {
    EnumFacts facts;
    CXType const underlying = clang_getEnumDeclIntegerType(cursor);
    entity.type = types_.read(underlying, cursor);
    CXTypeKind const kind = clang_getCanonicalType(underlying).kind;
    bool const isUnsigned = kind == CXType_Bool || kind == CXType_Char_U || kind == CXType_UChar ||
                            kind == CXType_UShort || kind == CXType_UInt || kind == CXType_ULong ||
                            kind == CXType_ULongLong || kind == CXType_Char16 || kind == CXType_Char32;
    long long const size = clang_Type_getSizeOf(underlying);
    if (size > 0) facts.bits = static_cast<unsigned>(size) * facts_.target.charBits;
    facts.isScoped = clang_EnumDecl_isScoped(cursor) != 0;
    facts.hasExplicitBase = hasExplicitBase(sources_.text(clang_getCursorExtent(cursor)));
    visitChildren(cursor, [&](CXCursor child) {
        if (clang_getCursorKind(child) != CXCursor_EnumConstantDecl) return CXChildVisit_Continue;
        EnumeratorFact enumerator;
        enumerator.name = nameOf(child);
        enumerator.value = isUnsigned ? std::to_string(clang_getEnumConstantDeclUnsignedValue(child))
                                      : std::to_string(clang_getEnumConstantDeclValue(child));
        if (entity.inProject) enumerator.comment = toText(clang_Cursor_getRawCommentText(child));
        facts.enumerators.push_back(std::move(enumerator));
        return CXChildVisit_Continue;
    });
    entity.detail = std::move(facts);
}

void DeclarationReader::describeTypedef(Entity& entity, CXCursor cursor) {
    TypedefFacts facts;
    CXCursor alias = cursor;
    if (clang_getCursorKind(cursor) == CXCursor_TypeAliasTemplateDecl) {
        facts.isTemplateAlias = true;
        visitChildren(cursor, [&](CXCursor child) {
            if (clang_getCursorKind(child) == CXCursor_TypeAliasDecl) alias = child;
            return CXChildVisit_Continue;
        });
    }
    facts.isAlias = clang_getCursorKind(alias) == CXCursor_TypeAliasDecl;
    entity.type = types_.read(clang_getTypedefDeclUnderlyingType(alias), cursor);
    entity.isDefined = true;
    entity.detail = facts;
}

} // namespace zelkor::producer
