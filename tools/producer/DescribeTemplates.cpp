// What one cursor tells about aggregates, templates, their parameters and arguments.
#include "DeclarationReader.hpp"

#include <boost/uuid/uuid_io.hpp>

namespace zelkor::producer {

namespace {

constexpr unsigned deepestBase = 32;

Access inheritanceOf(CXCursor base) {
    switch (clang_getCXXAccessSpecifier(base)) {
    case CX_CXXProtected:
        return Access::Protected;
    case CX_CXXPrivate:
        return Access::Private;
    default:
        return Access::Public;
    }
}

bool hasFields(CXType type) {
    bool found = false;
    clang_Type_visitFields(
        type,
        [](CXCursor, CXClientData data) {
            *static_cast<bool*>(data) = true;
            return CXVisit_Break;
        },
        &found);
    return found;
}

bool isEmptyRecord(CXCursor definition, unsigned depth) {
    if (depth > deepestBase || hasFields(clang_getCursorType(definition))) return false;
    // An implicit instantiation shows nothing but its fields; the rest is as in the template.
    CXCursor const pattern = clang_getSpecializedCursorTemplate(definition);
    bool isEmpty = clang_Cursor_isNull(pattern) || clang_getCursorKind(pattern) != CXCursor_ClassTemplate ||
                   isEmptyRecord(pattern, depth + 1);
    visitChildren(definition, [&](CXCursor child) {
        CXCursorKind const kind = clang_getCursorKind(child);
        if (kind == CXCursor_FieldDecl) {
            isEmpty &= nameOf(child).empty() && clang_Cursor_isBitField(child);
        } else if (isRecordCursor(kind)) {
            isEmpty &= !clang_Cursor_isAnonymousRecordDecl(child);
        } else if (kind == CXCursor_CXXBaseSpecifier) {
            CXCursor const base =
                clang_getCursorDefinition(clang_getTypeDeclaration(clang_getCursorType(child)));
            isEmpty &=
                !clang_isVirtualBase(child) && (clang_Cursor_isNull(base) || isEmptyRecord(base, depth + 1));
        } else if (isFunctionCursor(kind)) {
            isEmpty &= !clang_CXXMethod_isVirtual(child);
        }
        return isEmpty ? CXChildVisit_Continue : CXChildVisit_Break;
    });
    return isEmpty;
}

TemplateKind templateKindOf(CXCursor cursor) {
    bool const isMember = isInRecord(cursor);
    switch (clang_getCursorKind(cursor)) {
    case CXCursor_ClassTemplate:
    case CXCursor_ClassTemplatePartialSpecialization:
        return isMember ? TemplateKind::MemberClass : TemplateKind::Class;
    case CXCursor_FunctionTemplate:
        return isMember ? TemplateKind::MemberFunction : TemplateKind::Function;
    case CXCursor_UnexposedDecl:
        return isMember ? TemplateKind::StaticDataMember : TemplateKind::Variable;
    default:
        return TemplateKind::Unknown;
    }
}

bool isParameterCursor(CXCursorKind kind) {
    return kind == CXCursor_TemplateTypeParameter || kind == CXCursor_NonTypeTemplateParameter ||
           kind == CXCursor_TemplateTemplateParameter;
}

// Lists of enclosing templates are repeated on members that are defined outside, after the member's own.
std::vector<CXCursor> ownParameterCursors(CXCursor templateCursor) {
    std::vector<CXCursor> own;
    bool const isAlias = clang_getCursorKind(templateCursor) == CXCursor_TypeAliasTemplateDecl;
    visitChildren(templateCursor, [&](CXCursor child) {
        if (!isParameterCursor(clang_getCursorKind(child))) return CXChildVisit_Continue;
        if (isAlias || clang_equalCursors(clang_getCursorSemanticParent(child), templateCursor))
            own.push_back(child);
        return CXChildVisit_Continue;
    });
    return own;
}

} // namespace

void DeclarationReader::describeRecord(Entity& entity, CXCursor cursor) {
    RecordFacts facts;
    facts.isLambda = isLambda(cursor);
    facts.isAbstract = clang_CXXRecord_isAbstract(cursor) != 0;
    if (entity.inProject && entity.isDefined) {
        facts.needsConstructor = facts.needsCopyConstructor = isCxx_ && !facts.isLambda;
        facts.isEmpty = isEmptyRecord(cursor, 0);
        visitChildren(cursor, [&](CXCursor child) {
            CXCursorKind const kind = clang_getCursorKind(child);
            if (kind == CXCursor_CXXFinalAttr) facts.isFinal = true;
            if (kind == CXCursor_Constructor) {
                facts.needsConstructor = false;
                if (clang_CXXConstructor_isCopyConstructor(child)) facts.needsCopyConstructor = false;
            }
            if (kind == CXCursor_CXXBaseSpecifier) {
                facts.bases.push_back({types_.read(clang_getCursorType(child), cursor), inheritanceOf(child),
                                       clang_isVirtualBase(child) != 0});
            }
            return CXChildVisit_Continue;
        });
    }
    entity.detail = std::move(facts);
    if (!isTemplateCursor(clang_getCursorKind(cursor))) describeSpecialisation(entity, cursor);
}

void DeclarationReader::describeTemplate(Entity& entity, CXCursor cursor) {
    TemplateFacts facts;
    facts.kind = templateKindOf(cursor);
    if (entity.inProject && isTemplateCursor(clang_getCursorKind(cursor))) {
        facts.prototype = referPrototype(cursor);
        facts.parameters = parametersOf(cursor, identityOf(cursor));
    }
    entity.detail = std::move(facts);
}

std::vector<TemplateParameterFact> DeclarationReader::parametersOf(CXCursor templateCursor,
                                                                   Id const& templateId) {
    std::vector<TemplateParameterFact> parameters;
    for (CXCursor const& cursor : ownParameterCursors(templateCursor)) {
        TemplateParameterFact parameter;
        parameter.id = makeId(templateId, "parameter", parameters.size());
        parameter.name = nameOf(cursor);
        parameter.position = sources_.position(cursor);
        parameter.isPack = declaresPack(sources_.text(clang_getCursorExtent(cursor)));
        switch (clang_getCursorKind(cursor)) {
        case CXCursor_NonTypeTemplateParameter:
            parameter.kind = TemplateParameterKind::NonType;
            break;
        case CXCursor_TemplateTemplateParameter:
            parameter.kind = TemplateParameterKind::Template;
            break;
        default:
            break;
        }
        parameters.push_back(std::move(parameter));
    }
    parameters_.try_emplace(templateId, parameters);
    // After all are known, since the type of one may name another.
    std::vector<CXCursor> const cursors = ownParameterCursors(templateCursor);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].kind != TemplateParameterKind::NonType) continue;
        CXType const type = clang_getCursorType(cursors[i]);
        parameters[i].type = parameters[i].isPack ? types_.readPackPattern(type, templateCursor)
                                                  : types_.read(type, templateCursor);
    }
    return parameters;
}

Id DeclarationReader::referParameter(CXCursor templateCursor, unsigned index) {
    Id const id = refer(templateCursor);
    if (id.is_nil()) return id;
    auto known = parameters_.find(id);
    if (known == parameters_.end()) {
        std::vector<TemplateParameterFact> parameters = parametersOf(templateCursor, id);
        TemplateFacts* const facts = entity(id).as<TemplateFacts>();
        if (facts && facts->parameters.empty()) facts->parameters = std::move(parameters);
        known = parameters_.find(id);
    }
    if (index >= known->second.size()) return Id{};
    TemplateParameterFact const& parameter = known->second[index];
    return parameter.kind == TemplateParameterKind::Type ? parameter.id : Id{};
}

void DeclarationReader::describePrototype(Entity& entity, CXCursor cursor) {
    Id const templateId = refer(cursor);
    entity.isPrototype = true;
    entity.templateOf = templateId;
    if (TypedefFacts* const facts = entity.as<TypedefFacts>()) facts->isDependent = true;
    if (clang_getCursorKind(cursor) == CXCursor_ClassTemplatePartialSpecialization) {
        entity.arguments = argumentsOfType(clang_getCursorType(cursor), cursor, cursor);
        return;
    }
    if (!parameters_.contains(templateId)) parametersOf(cursor, templateId);
    for (TemplateParameterFact const& parameter : parameters_.at(templateId)) {
        TemplateArgumentFact argument;
        argument.name = parameter.name;
        if (parameter.isPack) {
            argument.kind = ArgumentKind::PackStart;
            entity.arguments.push_back(argument);
        }
        switch (parameter.kind) {
        case TemplateParameterKind::Type:
            argument.kind = ArgumentKind::Type;
            argument.type = parameter.id;
            break;
        case TemplateParameterKind::NonType:
            argument.kind = ArgumentKind::NonType;
            argument.parameter = parameter.id;
            break;
        case TemplateParameterKind::Template:
            argument.kind = ArgumentKind::TemplateTemplate;
            break;
        }
        entity.arguments.push_back(std::move(argument));
    }
}

void DeclarationReader::describeSpecialisation(Entity& entity, CXCursor cursor) {
    CXCursor const pattern = clang_getSpecializedCursorTemplate(cursor);
    // Members of instantiations have patterns too, but those are no templates.
    if (clang_Cursor_isNull(pattern) || !isTemplateCursor(clang_getCursorKind(pattern))) return;
    entity.templateOf = refer(pattern);
    entity.arguments = argumentsOf(cursor);
}

std::vector<TemplateArgumentFact> DeclarationReader::argumentsOf(CXCursor cursor) {
    return isRecordCursor(clang_getCursorKind(cursor))
               ? argumentsOfType(clang_getCursorType(cursor), cursor, cursor)
               : argumentsOfFunction(cursor);
}

TemplateArgumentFact DeclarationReader::valueArgument(CXCursor cursor, unsigned index, unsigned parameter) {
    TemplateArgumentFact argument;
    CXTemplateArgumentKind const kind = clang_Cursor_getTemplateArgumentKind(cursor, index);
    if (kind == CXTemplateArgumentKind_Template || kind == CXTemplateArgumentKind_TemplateExpansion) {
        argument.kind = ArgumentKind::TemplateTemplate;
        return argument;
    }
    argument.kind = ArgumentKind::NonType;
    if (kind != CXTemplateArgumentKind_Integral) return argument;
    ConstantFact constant;
    constant.kind = ConstantKind::Integer;
    CXCursor const pattern = clang_getSpecializedCursorTemplate(cursor);
    std::vector<CXCursor> const parameters = ownParameterCursors(pattern);
    CXType const type = parameter < parameters.size() ? clang_getCursorType(parameters[parameter])
                                                      : clang_getCursorType(CXCursor{});
    CXTypeKind const typeKind = clang_getCanonicalType(type).kind;
    bool const isUnsigned = typeKind == CXType_ULong || typeKind == CXType_ULongLong;
    constant.value = isUnsigned ? std::to_string(clang_Cursor_getTemplateArgumentUnsignedValue(cursor, index))
                                : std::to_string(clang_Cursor_getTemplateArgumentValue(cursor, index));
    // A dependent type of a parameter says nothing about this argument.
    if (typeKind != CXType_Unexposed && typeKind != CXType_Auto) constant.type = types_.read(type, pattern);
    argument.value = std::move(constant);
    return argument;
}

// A type lists the elements of packs one by one, its declaration lists each pack as one argument.
std::vector<TemplateArgumentFact> DeclarationReader::argumentsOfType(CXType type, CXCursor cursor,
                                                                     CXCursor context) {
    std::vector<TemplateArgumentFact> arguments;
    int const count = clang_Type_getNumTemplateArguments(type);
    int const declared = clang_Cursor_getNumTemplateArguments(cursor);
    int pack = -1;
    for (int i = 0; i < declared && pack < 0; ++i) {
        auto const kind = clang_Cursor_getTemplateArgumentKind(cursor, static_cast<unsigned>(i));
        if (kind == CXTemplateArgumentKind_Pack) pack = i;
    }
    for (int i = 0; i < count; ++i) {
        TemplateArgumentFact argument;
        if (i == pack) {
            argument.kind = ArgumentKind::PackStart;
            arguments.push_back(argument);
        }
        CXType const typeArgument = clang_Type_getTemplateArgumentAsType(type, static_cast<unsigned>(i));
        unsigned const index = static_cast<unsigned>(i);
        if (typeArgument.kind != CXType_Invalid) {
            argument.kind = ArgumentKind::Type;
            argument.type = types_.read(typeArgument, context);
        } else if (i < declared && (pack < 0 || i < pack)) {
            argument = valueArgument(cursor, index, index);
        } else {
            argument.kind = ArgumentKind::NonType;
        }
        arguments.push_back(std::move(argument));
    }
    if (pack >= count) arguments.push_back({ArgumentKind::PackStart, {}, {}, {}, {}});
    return arguments;
}

std::vector<TemplateArgumentFact> DeclarationReader::argumentsOfFunction(CXCursor cursor) {
    std::vector<TemplateArgumentFact> arguments;
    for (int i = 0, count = clang_Cursor_getNumTemplateArguments(cursor); i < count; ++i) {
        unsigned const index = static_cast<unsigned>(i);
        TemplateArgumentFact argument;
        switch (clang_Cursor_getTemplateArgumentKind(cursor, index)) {
        case CXTemplateArgumentKind_Type:
            argument.kind = ArgumentKind::Type;
            argument.type = types_.read(clang_Cursor_getTemplateArgumentType(cursor, index), cursor);
            break;
        case CXTemplateArgumentKind_Pack:
            argument.kind = ArgumentKind::PackStart;
            break;
        default:
            argument = valueArgument(cursor, index, index);
        }
        arguments.push_back(std::move(argument));
    }
    return arguments;
}

Id DeclarationReader::referDependent(CXCursor templateCursor, CXType type, CXCursor context) {
    Id const templateId = refer(templateCursor);
    std::vector<TemplateArgumentFact> arguments = argumentsOfType(type, templateCursor, context);
    std::string key = boost::uuids::to_string(templateId);
    bool hasValues = false;
    for (TemplateArgumentFact const& argument : arguments) {
        key += std::to_string(static_cast<int>(argument.kind)) + boost::uuids::to_string(argument.type);
        hasValues |= argument.kind == ArgumentKind::NonType;
    }
    // Dependent values are known by their text alone.
    if (hasValues) key += sources_.paths().withoutRoot(toText(clang_getTypeSpelling(type)));
    Id const id = makeId("specialisation", key);
    if (table_.contains(id)) return id;
    Entity& made = entities_.emplace_back();
    table_.emplace(id, &made);
    describeCommon(made, templateCursor);
    made.id = id;
    made.isDefined = false;
    made.comments.clear();
    made.templateOf = templateId;
    made.arguments = std::move(arguments);
    describePlace(made, templateCursor);
    made.detail = RecordFacts{};
    switch (patternKind(templateCursor)) {
    case CXCursor_StructDecl:
        made.kind = EntityKind::Struct;
        break;
    case CXCursor_UnionDecl:
        made.kind = EntityKind::Union;
        break;
    case CXCursor_TypeAliasDecl: {
        made.kind = EntityKind::Typedef;
        TypedefFacts facts;
        facts.isAlias = facts.isTemplateAlias = facts.isDependent = true;
        made.detail = facts;
        made.type = types_.read(clang_getCanonicalType(type), context);
        break;
    }
    default:
        made.kind = EntityKind::Class;
    }
    return id;
}

} // namespace zelkor::producer
