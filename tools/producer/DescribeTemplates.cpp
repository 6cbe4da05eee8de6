// What one cursor tells about aggregates, templates, their parameters and arguments.
#include "DeclarationReader.hpp"

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

// Once arguments of a class template are deduced, its parameters belong to the guide of that deduction.
bool belongsTo(CXCursor parameter, CXCursor templateCursor) {
    CXCursor const parent = clang_getCursorSemanticParent(parameter);
    return clang_equalCursors(parent, templateCursor) || isDeductionGuide(parent);
}

} // namespace

bool isDeductionGuide(CXCursor cursor) {
    return clang_getCursorKind(cursor) == CXCursor_FunctionTemplate &&
           clang_getTemplateCursorKind(cursor) == CXCursor_UnexposedDecl;
}

std::vector<CXCursor> ownParameterCursors(CXCursor templateCursor) {
    std::vector<CXCursor> own;
    bool const isAlias = clang_getCursorKind(templateCursor) == CXCursor_TypeAliasTemplateDecl;
    visitChildren(templateCursor, [&](CXCursor child) {
        bool const isParameter = isParameterCursor(clang_getCursorKind(child));
        if (isParameter && (isAlias || belongsTo(child, templateCursor))) own.push_back(child);
        return CXChildVisit_Continue;
    });
    return own;
}

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

std::vector<TemplateParameterFact> const& DeclarationReader::knownParameters(CXCursor templateCursor) {
    static std::vector<TemplateParameterFact> const none;
    Id const id = refer(templateCursor);
    if (id.is_nil()) return none;
    if (!parameters_.contains(id)) {
        std::vector<TemplateParameterFact> parameters = parametersOf(templateCursor, id);
        TemplateFacts* const facts = entity(id).as<TemplateFacts>();
        if (facts && facts->parameters.empty()) facts->parameters = std::move(parameters);
    }
    return parameters_.at(id);
}

Id DeclarationReader::referParameter(CXCursor templateCursor, unsigned index) {
    std::vector<TemplateParameterFact> const& parameters = knownParameters(templateCursor);
    if (index >= parameters.size()) return Id{};
    TemplateParameterFact const& parameter = parameters[index];
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

} // namespace zelkor::producer
