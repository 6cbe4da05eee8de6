#include "DeclarationReader.hpp"

#include "Merge.hpp"

#include <algorithm>

namespace zelkor::producer {

namespace {

struct CursorRow {
    CXCursorKind cursor;
    EntityKind kind;
    char const* family;
};

constexpr CursorRow cursorRows[] = {
    {CXCursor_Namespace, EntityKind::Namespace, "namespace"},
    {CXCursor_NamespaceAlias, EntityKind::Namespace, "namespace"},
    {CXCursor_FunctionDecl, EntityKind::Function, "function"},
    {CXCursor_CXXMethod, EntityKind::Method, "function"},
    {CXCursor_Constructor, EntityKind::Method, "function"},
    {CXCursor_Destructor, EntityKind::Method, "function"},
    {CXCursor_ConversionFunction, EntityKind::Method, "function"},
    {CXCursor_VarDecl, EntityKind::Variable, "variable"},
    {CXCursor_FieldDecl, EntityKind::Member, "variable"},
    {CXCursor_StructDecl, EntityKind::Struct, "aggregate"},
    {CXCursor_ClassDecl, EntityKind::Class, "aggregate"},
    {CXCursor_UnionDecl, EntityKind::Union, "aggregate"},
    {CXCursor_EnumDecl, EntityKind::Enum, "enumeration"},
    {CXCursor_TypedefDecl, EntityKind::Typedef, "typedef"},
    {CXCursor_TypeAliasDecl, EntityKind::Typedef, "typedef"},
    {CXCursor_FunctionTemplate, EntityKind::Template, "template"},
    {CXCursor_ClassTemplate, EntityKind::Template, "template"},
    {CXCursor_ClassTemplatePartialSpecialization, EntityKind::Template, "template"},
    {CXCursor_TypeAliasTemplateDecl, EntityKind::Template, "template"},
    {CXCursor_UnexposedDecl, EntityKind::Template, "template"}, // a variable template, see declareUnexposed
};

CursorRow const* rowOf(CXCursorKind kind) {
    auto const row = std::find_if(std::begin(cursorRows), std::end(cursorRows),
                                  [kind](CursorRow const& candidate) { return candidate.cursor == kind; });
    return row == std::end(cursorRows) ? nullptr : row;
}

bool isUnion(CXCursor cursor) {
    return clang_getCursorKind(cursor) == CXCursor_UnionDecl ||
           (isTemplateCursor(clang_getCursorKind(cursor)) && patternKind(cursor) == CXCursor_UnionDecl);
}

} // namespace

bool isTemplateCursor(CXCursorKind kind) {
    return kind == CXCursor_ClassTemplate || kind == CXCursor_FunctionTemplate ||
           kind == CXCursor_ClassTemplatePartialSpecialization || kind == CXCursor_TypeAliasTemplateDecl;
}

bool isRecordCursor(CXCursorKind kind) {
    return kind == CXCursor_StructDecl || kind == CXCursor_ClassDecl || kind == CXCursor_UnionDecl;
}

bool isFunctionCursor(CXCursorKind kind) {
    return kind == CXCursor_FunctionDecl || kind == CXCursor_CXXMethod || kind == CXCursor_Constructor ||
           kind == CXCursor_Destructor || kind == CXCursor_ConversionFunction;
}

CXCursorKind patternKind(CXCursor templateCursor) {
    if (isDeductionGuide(templateCursor)) return CXCursor_FunctionDecl;
    CXCursorKind const kind = clang_getCursorKind(templateCursor);
    return kind == CXCursor_TypeAliasTemplateDecl ? CXCursor_TypeAliasDecl
                                                  : clang_getTemplateCursorKind(templateCursor);
}

CXCursor scopeOf(CXCursor cursor) {
    CXCursor scope = clang_getCursorSemanticParent(cursor);
    while (clang_getCursorKind(scope) == CXCursor_LinkageSpec ||
           clang_getCursorKind(scope) == CXCursor_EnumDecl) {
        scope = clang_getCursorSemanticParent(scope);
    }
    return scope;
}

bool isInRecord(CXCursor cursor) {
    CXCursor const scope = scopeOf(cursor);
    CXCursorKind const kind = clang_getCursorKind(scope);
    return isRecordCursor(kind) || (isTemplateCursor(kind) && isRecordCursor(patternKind(scope)));
}

bool isLambda(CXCursor cursor) {
    return clang_getCursorKind(cursor) == CXCursor_ClassDecl &&
           toText(clang_getCursorSpelling(cursor)).starts_with("(lambda at ");
}

bool isNameless(CXCursor cursor) {
    CXCursorKind const kind = clang_getCursorKind(cursor);
    bool const mayBe = isRecordCursor(kind) || kind == CXCursor_EnumDecl || kind == CXCursor_FieldDecl;
    return mayBe && nameOf(cursor).empty();
}

std::string nameOf(CXCursor cursor) {
    std::string name = toText(clang_getCursorSpelling(cursor));
    CXCursorKind kind = clang_getCursorKind(cursor);
    if (isTemplateCursor(kind)) kind = patternKind(cursor);
    // The front end makes names for what has none, with the place in them.
    if (name.starts_with('(') || name.find(" at ") != std::string::npos) return {};
    if (kind == CXCursor_Constructor || kind == CXCursor_Destructor) return name.substr(0, name.find('<'));
    return name;
}

namespace {

std::vector<CXCursor> fieldsOf(CXType type) {
    std::vector<CXCursor> fields;
    clang_Type_visitFields(
        type,
        [](CXCursor field, CXClientData data) {
            static_cast<std::vector<CXCursor>*>(data)->push_back(field);
            return CXVisit_Continue;
        },
        &fields);
    return fields;
}

// Members depend on the scope too: a union holds no methods, and a static data member is a variable to the
// front end.
EntityKind kindIn(EntityKind kind, CXCursor cursor) {
    if (kind != EntityKind::Method && kind != EntityKind::Variable && kind != EntityKind::Function)
        return kind;
    if (kind == EntityKind::Variable) return isInRecord(cursor) ? EntityKind::Member : kind;
    if (!isInRecord(cursor) || isUnion(scopeOf(cursor))) return EntityKind::Function;
    return EntityKind::Method;
}

} // namespace

DeclarationReader::DeclarationReader(SourceIndex& sources, UnitFacts& facts, bool wantsUses)
    : sources_(sources), facts_(facts), isCxx_(facts.language >= Language::Cxx), types_(*this, facts),
      constants_(*this, types_), uses_(wantsUses), bodies_(*this, uses_) {}

Id DeclarationReader::ownerKeyOf(CXCursor scope) {
    CXCursorKind const kind = clang_getCursorKind(scope);
    return clang_isInvalid(kind) || kind == CXCursor_TranslationUnit ? Id{} : identityOf(scope);
}

Id DeclarationReader::identityOf(CXCursor cursor) {
    auto const known = identities_.find(cursor);
    if (known != identities_.end()) return known->second;
    CursorRow const* const row = rowOf(clang_getCursorKind(cursor));
    Id const id = row ? makeId(row->family, keyOf(cursor)) : Id{};
    identities_.emplace(cursor, id);
    return id;
}

Id DeclarationReader::refer(CXCursor cursor) {
    CXCursorKind const kind = clang_getCursorKind(cursor);
    CursorRow const* const row = rowOf(kind);
    if (!row || clang_isInvalid(kind)) return Id{};
    return ensure(identityOf(cursor), kindIn(row->kind, cursor), cursor, false);
}

Id DeclarationReader::referPrototype(CXCursor templateCursor) {
    CursorRow const* const row = rowOf(patternKind(templateCursor));
    if (!row) return Id{};
    return ensure(makeId(row->family, keyOf(templateCursor)), kindIn(row->kind, templateCursor),
                  templateCursor, true);
}

Id DeclarationReader::ensure(Id const& id, EntityKind kind, CXCursor cursor, bool asPrototype) {
    if (table_.contains(id)) return id;
    Entity& placeholder = entities_.emplace_back();
    placeholder.id = id;
    placeholder.kind = kind;
    // Entered first, since types and scopes lead back here.
    table_.emplace(id, &placeholder);
    // What is defined outside of the project tells most when made from there; nobody visits it for itself.
    CXCursor const definition = clang_getCursorDefinition(cursor);
    bool const isDefinedOutside = !asPrototype && !clang_Cursor_isNull(definition) &&
                                  clang_getCursorKind(definition) == clang_getCursorKind(cursor) &&
                                  !sources_.inProject(definition);
    bool const isDeclaredInside = sources_.inProject(cursor);
    placeholder = describe(isDefinedOutside && !isDeclaredInside ? definition : cursor, kind, asPrototype);
    placeholder.id = id;
    if (isDefinedOutside && isDeclaredInside) fold(id, describe(definition, kind, false));
    Entity& made = placeholder;
    RecordFacts* const record = made.as<RecordFacts>();
    if (record && made.inProject && !asPrototype) records_.push_back(cursor);
    return id;
}

Id DeclarationReader::ownerOf(CXCursor cursor) {
    CXCursor const scope = scopeOf(cursor);
    CXCursorKind const kind = clang_getCursorKind(scope);
    if (clang_isInvalid(kind) || kind == CXCursor_TranslationUnit) return Id{};
    return isTemplateCursor(kind) ? referPrototype(scope) : refer(scope);
}

void DeclarationReader::fold(Id const& id, Entity&& seen) {
    Entity& known = entity(id);
    seen.id = id;
    foldEntity(known, std::move(seen));
}

Entity& DeclarationReader::meet(Id const& id) {
    Entity& met = entity(id);
    if (met_.insert(id).second) order_.push_back(&met);
    return met;
}

Entity& DeclarationReader::meet(CXCursor cursor) {
    bool const isNew = !table_.contains(identityOf(cursor));
    Id const id = refer(cursor);
    if (!isNew && described_.insert(cursor).second) fold(id, describe(cursor, entity(id).kind, false));
    return meet(id);
}

void DeclarationReader::declareChildren(CXCursor cursor) {
    visitChildren(cursor, [this](CXCursor child) {
        declare(child);
        return CXChildVisit_Continue;
    });
}

void DeclarationReader::declare(CXCursor cursor) {
    CXCursorKind const kind = clang_getCursorKind(cursor);
    if (!clang_isDeclaration(kind) && kind != CXCursor_FriendDecl) return;
    if (kind != CXCursor_LinkageSpec && !sources_.inProject(cursor)) return;
    switch (kind) {
    case CXCursor_LinkageSpec:
        declareChildren(cursor);
        break;
    case CXCursor_Namespace:
        meet(cursor);
        declareChildren(cursor);
        break;
    case CXCursor_NamespaceAlias:
    case CXCursor_EnumDecl:
    case CXCursor_TypedefDecl:
    case CXCursor_TypeAliasDecl:
        meet(cursor);
        break;
    case CXCursor_StructDecl:
    case CXCursor_ClassDecl:
    case CXCursor_UnionDecl:
        declareRecord(cursor, meet(cursor).id);
        break;
    case CXCursor_CXXMethod:
    case CXCursor_Destructor:
    case CXCursor_ConversionFunction:
        readOverrides(cursor, meet(cursor).id);
        [[fallthrough]];
    case CXCursor_FunctionDecl:
    case CXCursor_Constructor:
    case CXCursor_VarDecl:
    case CXCursor_FieldDecl:
        bodies_.read(cursor, meet(cursor).id);
        break;
    case CXCursor_FunctionTemplate:
    case CXCursor_ClassTemplate:
    case CXCursor_ClassTemplatePartialSpecialization:
    case CXCursor_TypeAliasTemplateDecl:
        declareTemplate(cursor);
        break;
    case CXCursor_UnexposedDecl:
        declareUnexposed(cursor);
        break;
    default:
        break;
    }
}

void DeclarationReader::declareRecord(CXCursor cursor, Id const& id) {
    // An explicit instantiation looks like a definition, but has nothing in it.
    if (entity(id).templateOf.is_nil()) written_.insert(id);
    bool hasAnonymous = false;
    visitChildren(cursor, [&](CXCursor child) {
        CXCursorKind const kind = clang_getCursorKind(child);
        if (kind == CXCursor_FriendDecl) {
            declareFriend(child, id);
            return CXChildVisit_Continue;
        }
        if (clang_isDeclaration(kind)) written_.insert(id);
        declare(child);
        if (isRecordCursor(kind) && clang_Cursor_isAnonymousRecordDecl(child)) hasAnonymous = true;
        return CXChildVisit_Continue;
    });
    // An anonymous union is a member without a name, which has no cursor among the children.
    if (!hasAnonymous) return;
    for (CXCursor const& field : fieldsOf(clang_getCursorType(cursor))) {
        if (isNameless(field)) meet(field);
    }
}

void DeclarationReader::declareFriend(CXCursor cursor, Id const& record) {
    Id function{};
    Id type{};
    visitChildren(cursor, [&](CXCursor child) {
        CXCursorKind const kind = clang_getCursorKind(child);
        if (isFunctionCursor(kind)) {
            declare(child);
            function = refer(child);
            FunctionFacts* const facts = entity(function).as<FunctionFacts>();
            if (facts && clang_isCursorDefinition(child)) facts->isDefinedInFriend = true;
        } else if (kind == CXCursor_FunctionTemplate) {
            declare(child);
            function = referPrototype(child);
        } else if (kind == CXCursor_ClassTemplate) {
            declare(child);
            type = referPrototype(child);
        } else if (isRecordCursor(kind)) {
            type = refer(child);
        } else if (kind == CXCursor_TypeRef && function.is_nil()) {
            type = refer(clang_getCursorReferenced(child));
        }
        return CXChildVisit_Continue;
    });
    RecordFacts* const facts = entity(record).as<RecordFacts>();
    auto const addOnce = [](std::vector<Id>& list, Id const& id) {
        if (!id.is_nil() && std::find(list.begin(), list.end(), id) == list.end()) list.push_back(id);
    };
    if (!facts) return;
    addOnce(facts->friendFunctions, function);
    if (function.is_nil()) addOnce(facts->friendTypes, type);
}

void DeclarationReader::declareTemplate(CXCursor cursor) {
    meet(cursor);
    bool const isNew = describedPrototypes_.insert(cursor).second;
    Id const prototype = referPrototype(cursor);
    if (prototype.is_nil()) return;
    if (isNew) fold(prototype, describe(cursor, entity(prototype).kind, true));
    meet(prototype);
    switch (clang_getCursorKind(cursor)) {
    case CXCursor_FunctionTemplate:
        bodies_.read(cursor, prototype);
        break;
    case CXCursor_TypeAliasTemplateDecl:
        break;
    default:
        declareRecord(cursor, prototype);
    }
}

// Variable templates have no cursor kind of their own, and neither have empty declarations and the like. Nor
// have their instantiations, which stand where the template does and differ from it only in the unified id;
// those of partial specialisations say so.
void DeclarationReader::declareUnexposed(CXCursor cursor) {
    std::string const name = nameOf(cursor);
    if (name.empty() || !sources_.text(clang_getCursorExtent(cursor)).starts_with("template")) return;
    std::string const usr = toText(clang_getCursorUSR(cursor));
    bool const hasArguments = usr.find("@" + name + ">#") != std::string::npos;
    if (!hasArguments || usr.find("@VP>") != std::string::npos) meet(cursor);
}

void DeclarationReader::declareLambda(CXCursor cursor) {
    CXCursor const closure = clang_getTypeDeclaration(clang_getCursorType(cursor));
    if (!isRecordCursor(clang_getCursorKind(closure))) return;
    declareRecord(closure, meet(closure).id);
}

Id DeclarationReader::declareLocal(CXCursor cursor) {
    return sources_.inProject(cursor) ? meet(cursor).id : Id{};
}

Id DeclarationReader::typeNamed(std::string_view qualifiedName) const {
    std::vector<std::string_view> names;
    for (std::string_view rest = qualifiedName; !rest.empty();) {
        std::size_t const end = std::min(rest.find("::"), rest.size());
        std::string_view const name = rest.substr(0, end);
        bool const isUnnamed = name == "(anonymous namespace)";
        if (!isUnnamed && !std::all_of(name.begin(), name.end(), isWordByte)) return Id{};
        names.push_back(isUnnamed ? std::string_view() : name);
        rest.remove_prefix(std::min(end + 2, rest.size()));
    }
    auto const isNamed = [&](Entity const* entity) {
        for (auto name = names.rbegin(); name != names.rend(); ++name) {
            if (!entity || entity->name != *name || !entity->templateOf.is_nil()) return false;
            auto const owner = table_.find(entity->owner);
            entity = owner == table_.end() ? nullptr : owner->second;
        }
        return entity == nullptr;
    };
    for (Entity const& entity : entities_) {
        bool const isType = entity.kind == EntityKind::Struct || entity.kind == EntityKind::Class ||
                            entity.kind == EntityKind::Union || entity.kind == EntityKind::Enum;
        if (isType && isNamed(&entity)) return entity.id;
    }
    return Id{};
}

Id DeclarationReader::known(CXCursor cursor) {
    Id const id = identityOf(cursor);
    return table_.contains(id) ? id : Id{};
}

Id DeclarationReader::functionParameter(CXCursor cursor) {
    CXCursor const function = clang_getCursorSemanticParent(cursor);
    CXCursorKind const kind = clang_getCursorKind(function);
    if (!isFunctionCursor(kind) && kind != CXCursor_FunctionTemplate) return Id{};
    std::vector<CXCursor> const parameters = parameterCursors(function);
    auto const found = std::find_if(parameters.begin(), parameters.end(), [&](CXCursor const& candidate) {
        return clang_equalCursors(candidate, cursor) != 0;
    });
    if (found == parameters.end()) return Id{};
    Id const owner = kind == CXCursor_FunctionTemplate ? referPrototype(function) : refer(function);
    return makeId(owner, "parameter", static_cast<std::size_t>(found - parameters.begin()));
}

void DeclarationReader::readOverrides(CXCursor cursor, Id const& id) {
    if (!clang_CXXMethod_isVirtual(cursor)) return;
    CXCursor* overridden = nullptr;
    unsigned count = 0;
    clang_getOverriddenCursors(cursor, &overridden, &count);
    for (unsigned i = 0; i < count; ++i)
        uses_.addOverride(id, refer(overridden[i]));
    clang_disposeOverriddenCursors(overridden);
}

void DeclarationReader::finish() {
    bodies_.readInstances();
    uses_.finish(facts_);
    // Reading fields may refer to further aggregates.
    for (std::size_t i = 0; i < records_.size(); ++i) {
        if (!written_.contains(identityOf(records_[i]))) readInstantiation(records_[i]);
    }
    for (Entity& made : entities_) {
        FunctionFacts* const function = made.as<FunctionFacts>();
        // A member that the text of its class does not show, such as an inherited constructor.
        bool const isHidden =
            !met_.contains(made.id) && written_.contains(made.owner) && made.templateOf.is_nil();
        if (function && isHidden) function->isCompilerGenerated = true;
        meet(made.id);
    }
    for (Entity* const next : order_)
        listInOwner(*next);
    for (Entity* const next : order_) {
        if (FunctionFacts* const function = next->as<FunctionFacts>()) {
            // Only the positions of stubs are wanted, not what stands between their braces.
            if (!next->inProject) function->body.reset();
        }
        facts_.entities.push_back(std::move(*next));
    }
}

void DeclarationReader::readInstantiation(CXCursor cursor) {
    entity(identityOf(cursor)).as<RecordFacts>()->isInstantiated = true;
    for (CXCursor const& field : fieldsOf(clang_getCursorType(cursor)))
        refer(field);
}

void DeclarationReader::listInOwner(Entity const& part) {
    auto const found = table_.find(part.owner);
    if (found == table_.end()) return;
    FunctionFacts const* const method = part.as<FunctionFacts>();
    bool const isMember = part.kind == EntityKind::Member || part.kind == EntityKind::Method;
    if (RecordFacts* const record = found->second->as<RecordFacts>()) {
        // What depends on the calls of a unit does not belong to the definition.
        bool const isMade =
            (method && method->isCompilerGenerated) || (!part.templateOf.is_nil() && !part.isPrototype);
        if (isMember && !isMade) record->contents.push_back(part.id);
    } else if (FunctionFacts* const function = found->second->as<FunctionFacts>()) {
        function->contents.push_back(part.id);
    }
}

} // namespace zelkor::producer
