// Functions, variables, aggregates, templates and constants.
#include "Emitter.hpp"
#include "EmitterEnums.hpp"

#include <array>

namespace zelkor::producer {

namespace za = zelkor::ast;

namespace {

constexpr std::array<za::SpecialFunctionKind, 7> specialKinds{za::SpecialFunctionKind::None,
                                                              za::SpecialFunctionKind::Constructor,
                                                              za::SpecialFunctionKind::CopyConstructor,
                                                              za::SpecialFunctionKind::Destructor,
                                                              za::SpecialFunctionKind::Conversion,
                                                              za::SpecialFunctionKind::UdlOperator,
                                                              za::SpecialFunctionKind::Operator};

constexpr std::array<za::TemplateArgKind, 5> argumentKinds{
    za::TemplateArgKind::Unknown, za::TemplateArgKind::Type, za::TemplateArgKind::NonType,
    za::TemplateArgKind::TemplateTemplate, za::TemplateArgKind::StartOfPackExpansion};

constexpr std::array<za::TemplateKind, 8> templateKinds{
    za::TemplateKind::Unknown,        za::TemplateKind::Class,
    za::TemplateKind::Function,       za::TemplateKind::Variable,
    za::TemplateKind::MemberFunction, za::TemplateKind::StaticDataMember,
    za::TemplateKind::MemberClass,    za::TemplateKind::TemplateTemplateParam};

constexpr std::array<za::AddressKind, 3> addressKinds{za::AddressKind::Unknown, za::AddressKind::Function,
                                                      za::AddressKind::Variable};

} // namespace

void Emitter::linkFunction(Entity const& entity, za::Function const& function, za::Scope const& home) {
    FunctionFacts const& facts = *entity.as<FunctionFacts>();
    std::size_t ordinal = 0;
    for (ParameterFact const& fact : facts.parameters) {
        Id const id = makeId(entity.id, "parameter", ordinal++);
        za::Variable const parameter = create<za::Variable>(id);
        elements_.emplace(id, parameter);
        if (!fact.name.empty()) parameter.setName(fact.name);
        parameter.setType(type(fact.type));
        parameter.setStorageClass(toModel(fact.storage));
        parameter.setIsParameterPack(fact.isPack);
        if (fact.position) parameter.setDefPos(position(*fact.position, makeId(id, "definition")));
        if (fact.defaultValue) parameter.setInitVal(constant(*fact.defaultValue, makeId(id, "value"), home));
        function.getParamsMutable().add(parameter);
    }
    if (facts.body) {
        function.setBodyPosition(range(*facts.body, makeId(entity.id, "body")));
        innerScope(entity.id);
    }
    function.setNumOptionalParams(facts.optionalParameters);
    function.setSpecialKind(specialKinds[static_cast<std::size_t>(facts.special)]);
    function.setIsCompilerGenerated(facts.isCompilerGenerated);
    function.setIsInline(facts.isInline);
    function.setIsVariadic(facts.isVariadic);
    function.setIsDeleted(facts.isDeleted);
    function.setIsDefinedInFriendDecl(facts.isDefinedInFriend);
    function.setIsTemplatePrototype(entity.isPrototype);
    function.setAssocTemplate(find<za::Template>(entity.templateOf));
    linkArguments(entity, function.getTemplateArgsMutable(), home);
    for (std::string const& comment : entity.comments)
        function.getCommentsMutable().push_back(toModelText(comment));
    auto const method = za::types::Method::cast(function);
    if (!method) return;
    method.setAccess(toModel(entity.access));
    method.setIsFinal(facts.isFinal);
    method.setIsAbstract(facts.isAbstract);
    method.setIsVirtual(facts.isVirtual);
    method.setIsThisConst(facts.isThisConst);
}

void Emitter::linkVariable(Entity const& entity, za::Variable const& variable, za::Scope const& home) {
    VariableFacts const& facts = *entity.as<VariableFacts>();
    if (facts.initialiser)
        variable.setInitVal(constant(*facts.initialiser, makeId(entity.id, "value"), home));
    for (std::string const& comment : entity.comments)
        variable.getCommentsMutable().push_back(toModelText(comment));
    auto const member = za::types::Member::cast(variable);
    if (!member) return;
    member.setAccess(toModel(entity.access));
    member.setIsBitField(facts.bits.has_value());
    member.setBitSize(facts.bits.value_or(0));
    member.setIsMutable(facts.isMutable);
}

void Emitter::linkAggregate(Entity const& entity, za::types::AggregateType const& aggregate,
                            za::Scope const& home) {
    RecordFacts const& facts = *entity.as<RecordFacts>();
    aggregate.setAssocTemplate(find<za::Template>(entity.templateOf));
    linkArguments(entity, aggregate.getTemplateArgsMutable(), home);
    for (std::string const& comment : entity.comments)
        aggregate.getCommentsMutable().push_back(toModelText(comment));
    aggregate.setIsIncomplete(!entity.isDefined);
    aggregate.setIsEmpty(facts.isEmpty);
    aggregate.setIsTemplatePrototype(entity.isPrototype);
    if (auto const type = za::types::StructType::cast(aggregate)) linkStruct(entity, type);
    if (auto const type = za::types::ClassType::cast(aggregate)) type.setIsLambdaClosure(facts.isLambda);
}

void Emitter::linkStruct(Entity const& entity, za::types::StructType const& made) {
    RecordFacts const& facts = *entity.as<RecordFacts>();
    std::size_t ordinal = 0;
    for (BaseFact const& fact : facts.bases) {
        auto const base = create<za::types::BaseClass>(makeId(entity.id, "base", ordinal++));
        base.setType(type(fact.type));
        base.setInheritance(toModel(fact.access));
        base.setIsVirtual(fact.isVirtual);
        made.getBaseClassesMutable().add(base);
    }
    for (Id const& id : facts.friendTypes) {
        auto const other = find<za::types::AggregateType>(id);
        if (!other) continue;
        made.getFriendAggregatesMutable().add(other);
        if (auto const type = za::types::StructType::cast(other))
            type.getBefriendingAggregatesMutable().add(made);
    }
    for (Id const& id : facts.friendFunctions) {
        auto const other = find<za::Function>(id);
        if (!other) continue;
        made.getFriendFunsMutable().add(other);
        other.getBefriendingAggregatesMutable().add(made);
    }
    made.setIsFinal(facts.isFinal);
    made.setIsAbstract(facts.isAbstract);
    made.setNeedsImplicitConstructor(facts.needsConstructor);
    made.setNeedsImplicitCopyConstructor(facts.needsCopyConstructor);
    made.setLinkage(toModel(entity.linkage));
}

void Emitter::linkTemplate(Entity const& entity, za::Template const& made) {
    TemplateFacts const& facts = *entity.as<TemplateFacts>();
    made.setKind(templateKinds[static_cast<std::size_t>(facts.kind)]);
    made.setProtoTypeInstantiation(find<za::Symbol>(facts.prototype));
    for (TemplateParameterFact const& fact : facts.parameters) {
        za::Scope const scope = innerScope(entity.id);
        if (fact.kind == TemplateParameterKind::NonType) {
            auto const value = find<za::constants::Constant>(fact.id);
            value.setName(fact.name);
            value.setType(type(fact.type));
            scope.getConstantsMutable().add(value);
            continue;
        }
        auto const symbol = find<za::Symbol>(fact.id);
        if (!fact.name.empty()) symbol.setName(fact.name);
        if (fact.position) symbol.setDefPos(position(*fact.position, makeId(fact.id, "definition")));
        if (auto const parameter = za::types::TemplateParamType::cast(symbol))
            parameter.setIsPack(fact.isPack);
        if (auto const nested = za::Template::cast(symbol))
            nested.setKind(za::TemplateKind::TemplateTemplateParam);
        scope.getSymbolsMutable().add(symbol);
    }
}

void Emitter::createParameters(TemplateFacts const& facts) {
    for (TemplateParameterFact const& fact : facts.parameters) {
        switch (fact.kind) {
        case TemplateParameterKind::Type:
            elements_.emplace(fact.id, create<za::types::TemplateParamType>(fact.id));
            break;
        case TemplateParameterKind::NonType:
            elements_.emplace(fact.id, create<za::constants::TemplateParamConstant>(fact.id));
            break;
        case TemplateParameterKind::Template:
            elements_.emplace(fact.id, create<za::Template>(fact.id));
            break;
        }
    }
}

void Emitter::linkArguments(Entity const& entity, brant::zero::ElementSequence<za::TemplateArg>& list,
                            za::Scope const& home) {
    std::size_t ordinal = 0;
    for (TemplateArgumentFact const& fact : entity.arguments) {
        Id const id = makeId(entity.id, "argument", ordinal++);
        za::TemplateArg const argument = create<za::TemplateArg>(id);
        if (!fact.name.empty()) argument.setName(fact.name);
        argument.setKind(argumentKinds[static_cast<std::size_t>(fact.kind)]);
        argument.setType(type(fact.type));
        if (fact.value) {
            za::constants::Constant const value = constant(*fact.value, makeId(id, "value"), home);
            home.getConstantsMutable().add(value);
            argument.setVal(value);
        } else {
            argument.setVal(find<za::constants::Constant>(fact.parameter));
        }
        list.add(argument);
    }
}

za::constants::Constant Emitter::createConstant(ConstantFact const& fact, Id const& id) {
    namespace constants = za::constants;
    switch (fact.kind) {
    case ConstantKind::Integer: {
        auto const made = create<constants::IntegerConstant>(id);
        made.setValue(fact.value);
        return made;
    }
    case ConstantKind::Float: {
        auto const made = create<constants::FloatConstant>(id);
        made.setValue(fact.value);
        return made;
    }
    case ConstantKind::String: {
        auto const made = create<constants::StringConstant>(id);
        made.setValue(toModelText(fact.value));
        return made;
    }
    case ConstantKind::Address: {
        auto const made = create<constants::AddressConstant>(id);
        made.setKind(addressKinds[static_cast<std::size_t>(fact.address)]);
        made.setValue(fact.value);
        return made;
    }
    case ConstantKind::Aggregate:
        return create<constants::AggregateConstant>(id);
    case ConstantKind::PointerToMember:
        return create<constants::PointerToMemberConstant>(id);
    case ConstantKind::TemplateParam:
        return create<constants::TemplateParamConstant>(id);
    case ConstantKind::DynamicInit:
        return create<constants::DynamicInitConstant>(id);
    case ConstantKind::InitRepeat:
        return create<constants::InitRepeatConstant>(id);
    case ConstantKind::Designator:
        return create<constants::DesignatorConstant>(id);
    }
    return {};
}

za::constants::Constant Emitter::constant(ConstantFact const& fact, Id const& id, za::Scope const& home) {
    za::constants::Constant const made = createConstant(fact, id);
    if (!fact.name.empty()) made.setName(fact.name);
    made.setType(type(fact.type));
    auto const aggregate = za::constants::AggregateConstant::cast(made);
    std::size_t ordinal = 0;
    for (ConstantFact const& element : fact.elements) {
        za::constants::Constant const part = constant(element, makeId(id, "element", ordinal++), home);
        home.getConstantsMutable().add(part);
        aggregate.getValueMutable().add(part);
    }
    return made;
}

} // namespace zelkor::producer
