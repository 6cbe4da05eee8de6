// Declarations: the elements, their owners, and what all of them have.
#include "Emitter.hpp"
#include "EmitterEnums.hpp"

#include <array>

namespace zelkor::producer {

namespace za = zelkor::ast;
namespace zero = brant::zero;

za::types::AccessSpecifierKind toModel(Access access) {
    static constexpr std::array<za::types::AccessSpecifierKind, 4> kinds{
        za::types::AccessSpecifierKind::None, za::types::AccessSpecifierKind::Public,
        za::types::AccessSpecifierKind::Protected, za::types::AccessSpecifierKind::Private};
    return kinds[static_cast<std::size_t>(access)];
}

za::LinkageKind toModel(Linkage linkage) {
    static constexpr std::array<za::LinkageKind, 4> kinds{za::LinkageKind::None, za::LinkageKind::Internal,
                                                          za::LinkageKind::External,
                                                          za::LinkageKind::ExternalCXX};
    return kinds[static_cast<std::size_t>(linkage)];
}

za::StorageClassKind toModel(StorageClass storage) {
    static constexpr std::array<za::StorageClassKind, 5> kinds{
        za::StorageClassKind::None, za::StorageClassKind::Extern, za::StorageClassKind::Static,
        za::StorageClassKind::Auto, za::StorageClassKind::Register};
    return kinds[static_cast<std::size_t>(storage)];
}

zero::ModelElement Emitter::createEntity(Entity const& entity) {
    switch (entity.kind) {
    case EntityKind::Namespace:
        return create<za::Namespace>(entity.id);
    case EntityKind::Function:
        return create<za::Function>(entity.id);
    case EntityKind::Method:
        return create<za::types::Method>(entity.id);
    case EntityKind::Variable:
        return create<za::Variable>(entity.id);
    case EntityKind::Member:
        return create<za::types::Member>(entity.id);
    case EntityKind::Struct:
        return create<za::types::StructType>(entity.id);
    case EntityKind::Class:
        return create<za::types::ClassType>(entity.id);
    case EntityKind::Union:
        return create<za::types::UnionType>(entity.id);
    case EntityKind::Enum:
        return create<za::types::EnumType>(entity.id);
    case EntityKind::Typedef:
        return create<za::types::TypedefType>(entity.id);
    case EntityKind::Template:
        return create<za::Template>(entity.id);
    }
    return {};
}

void Emitter::linkEntity(MergedEntity const& merged) {
    Entity const& entity = merged.facts;
    za::Scope const unit = units_.at(merged.unit);
    if (entity.kind == EntityKind::Namespace) {
        linkNamespace(entity, scopeOf(entity.owner, unit));
    } else {
        linkSymbol(entity, find<za::Symbol>(entity.id), unit);
    }
}

void Emitter::linkNamespace(Entity const& entity, za::Scope const& owner) {
    auto const made = find<za::Namespace>(entity.id);
    NamespaceFacts const& facts = *entity.as<NamespaceFacts>();
    made.setName(entity.name);
    made.setIsInline(facts.isInline);
    made.setIsStd(facts.isStd);
    made.setAlias(find<za::Namespace>(facts.alias));
    owner.getNamespacesMutable().add(made);
}

void Emitter::linkSymbol(Entity const& entity, za::Symbol const& symbol, za::Scope const& unit) {
    if (!entity.name.empty()) symbol.setName(entity.name);
    if (entity.definition) symbol.setDefPos(position(*entity.definition, makeId(entity.id, "definition")));
    std::size_t ordinal = 0;
    for (Position const& declared : entity.declarations) {
        symbol.getDeclPosMutable().add(position(declared, makeId(entity.id, "declaration", ordinal++)));
    }
    putIntoOwner(entity, symbol, unit);
    za::Scope const home = scopeOf(entity.owner, unit);
    if (auto const type = za::types::Type::cast(symbol)) type.setAccess(toModel(entity.access));
    if (auto const declaration = za::Declaration::cast(symbol)) linkDeclaration(entity, declaration);
    if (auto const function = za::Function::cast(symbol)) linkFunction(entity, function, home);
    if (auto const variable = za::Variable::cast(symbol)) linkVariable(entity, variable, home);
    if (auto const aggregate = za::types::AggregateType::cast(symbol)) linkAggregate(entity, aggregate, home);
    if (auto const type = za::types::EnumType::cast(symbol)) linkEnum(entity, type);
    if (auto const type = za::types::TypedefType::cast(symbol)) linkTypedef(entity, type, home);
    if (auto const made = za::Template::cast(symbol)) linkTemplate(entity, made);
}

void Emitter::putIntoOwner(Entity const& entity, za::Symbol const& symbol, za::Scope const& unit) {
    if (auto const member = za::types::Member::cast(symbol)) {
        if (auto const aggregate = find<za::types::AggregateType>(entity.owner)) {
            aggregate.getMembersMutable().add(member);
            return;
        }
    }
    if (auto const method = za::types::Method::cast(symbol)) {
        if (auto const type = find<za::types::StructType>(entity.owner)) {
            type.getMethodsMutable().add(method);
            return;
        }
    }
    scopeOf(entity.owner, unit).getSymbolsMutable().add(symbol);
}

za::Scope Emitter::scopeOf(Id const& owner, za::Scope const& unit) {
    if (owner.is_nil()) return unit;
    if (auto const name = find<za::Namespace>(owner)) return name;
    za::Scope const inner = innerScope(owner);
    return inner ? inner : unit;
}

za::Scope Emitter::innerScope(Id const& id) {
    Id const scopeId = makeId(id, "scope");
    auto const function = find<za::Function>(id);
    auto const aggregate = find<za::types::AggregateType>(id);
    auto const symbol = find<za::Template>(id);
    za::Scope scope;
    if (function) scope = function.getScope();
    if (aggregate) scope = aggregate.getScope();
    if (symbol) scope = symbol.getScope();
    if (scope || (!function && !aggregate && !symbol)) return scope;
    scope = create<za::Scope>(scopeId);
    if (function) function.setScope(scope);
    if (aggregate) aggregate.setScope(scope);
    if (symbol) symbol.setScope(scope);
    return scope;
}

void Emitter::linkDeclaration(Entity const& entity, za::Declaration const& declaration) {
    declaration.setType(type(entity.type));
    declaration.setStorageClass(toModel(entity.storage));
    declaration.setLinkage(toModel(entity.linkage));
}

void Emitter::linkEnum(Entity const& entity, za::types::EnumType const& made) {
    EnumFacts const& facts = *entity.as<EnumFacts>();
    made.setNumBits(facts.bits);
    made.setIsScopedEnum(facts.isScoped);
    made.setHasExplicitEnumBase(facts.hasExplicitBase);
    made.setStorageType(type(entity.type));
    for (std::string const& comment : entity.comments)
        made.getCommentsMutable().push_back(toModelText(comment));
    for (EnumeratorFact const& enumerator : facts.enumerators) {
        made.getStringsMutable().push_back(enumerator.name);
        made.getValuesMutable().push_back(enumerator.value);
        made.getEnumeratorCommentsMutable().push_back(toModelText(enumerator.comment));
    }
}

void Emitter::linkTypedef(Entity const& entity, za::types::TypedefType const& made, za::Scope const& home) {
    TypedefFacts const& facts = *entity.as<TypedefFacts>();
    made.setType(type(entity.type));
    made.setIsAlias(facts.isAlias);
    made.setIsTemplateAlias(facts.isTemplateAlias);
    made.setIsDependent(facts.isDependent);
    made.setIsPrototypeInstantiation(entity.isPrototype);
    made.setAssocTemplate(find<za::Template>(entity.templateOf));
    linkArguments(entity, made.getTemplateArgsMutable(), home);
}

} // namespace zelkor::producer
