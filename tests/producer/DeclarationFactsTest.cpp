// What the front end knows of declarations must arrive in the facts.
#include "FactsSupport.hpp"
#include "MangledNames.hpp"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace zelkor::producer::test {
namespace {

using namespace std::string_literals;

class DeclarationFacts : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        first = new UnitFacts(parse("first.cpp"));
        plain = new UnitFacts(parse("plain.c"));
    }
    static void TearDownTestSuite() {
        delete first;
        delete plain;
    }
    static UnitFacts const& unit(bool isC) { return isC ? *plain : *first; }
    static inline UnitFacts* first = nullptr;
    static inline UnitFacts* plain = nullptr;
};

TEST_F(DeclarationFacts, FixturesHaveNoErrors) {
    for (UnitFacts const* const facts : {first, plain}) {
        EXPECT_EQ(facts->failure, "");
        for (Diagnostic const& diagnostic : facts->diagnostics) {
            EXPECT_LT(diagnostic.severity, Severity::Error) << diagnostic.text;
        }
    }
}

TEST_F(DeclarationFacts, WhatIsKnownOfEach) {
    struct Row {
        bool isC;
        EntityKind kind;
        char const* owner;
        char const* name;
        std::string facts;
    };
    using enum EntityKind;
    Row const rows[] = {
        {false, Method, "Shape", "area", "fn()->double C++ public virtual abstract const"},
        {false, Method, "Shape", "~Shape", "fn()->none C++ public virtual destructor"},
        {false, Method, "Shape", "isLarge", "fn(double,int,)->bool C++ public 2 optional inline const"},
        {false, Method, "Shape", "operator bool", "fn()->bool C++ public const conversion"},
        {false, Method, "Shape", "operator==", "fn(ref(const(Shape)),)->bool C++ public const operator"},
        {false, Method, "Square", "area", "fn()->double C++ public virtual final const"},
        {false, Method, "Square", "Square",
         "fn(ref(const(Square)),)->none C++ public inline deleted copy constructor"},
        {false, Function, "Word", "low", "fn()->uint C++ public inline const"},
        {false, Function, "shapes", "later", "fn(int,)->int C++ inline"},
        {false, Function, "", "operator\"\"_km", "fn(ullong,)->long C++ udl operator"},
        {false, Function, "", "fromC", "fn()->int C"},
        {false, Function, "", "register_plain", "fn(int,)->int C"},
        {false, Function, "shapes", "largest", "fn(param T,param T,)->param T C++"},
        {false, Method, "Box", "put", "fn(rref(param U),)->void C++ public"},
        {false, Function, "shapes", "countAll", "fn(rref(param Args),)->int C++"},
        {false, Variable, "*", "counter", "int static internal = int 16"},
        {false, Variable, "*", "pointer", "pointer(const(int)) C++ = address counter"},
        {false, Variable, "*", "greeting", "array[9](const(char)) internal = string hi\nA\0end"s},
        {false, Variable, "*", "ratio", "double C++ = float 0.1"},
        {false, Variable, "*", "single", "float C++ = float 1.1"},
        {false, Variable, "*", "table", "array[5](int) C++ = {int 1, int -2, int 3, repeat}"},
        {false, Variable, "*", "colour", "Colour C++ = int Green 2"},
        {false, Variable, "*", "member", "memptr(int) C++ = member shapes::Forward::value"},
        {false, Variable, "*", "function", "pointer(fn(int,)->int) C++ = address shapes::later"},
        {false, Variable, "*", "reference", "ref(array[2](int)) C++ = run time"},
        {false, Variable, "*", "yes", "bool C++ = int 1"},
        {false, Variable, "*", "same", "decltype(int) C++ = int 4"},
        {false, Variable, "*", "huge", "ullong C++ = int 18446744073709551615"},
        {false, Variable, "*", "box", "Box C++ = run time"},
        {false, Variable, "*", "pairs", "pointer(Pair) C++ = int 0"},
        {false, Variable, "*", "hidden", "int internal = int 1"},
        {false, Variable, "*", "sharedWithC", "int C"},
        {false, Variable, "*", "calls", "int static"},
        {false, Variable, "*", "nested", "int = run time"},
        {true, Variable, "*", "origin",
         "point C = {designator x, int 1, designator y, int -2, designator name, string origin}"},
        {true, Variable, "*", "sparse", "array[100](int) C = {int 1, designator 5, int 7, repeat}"},
        {true, Variable, "*", "kind", "plain_kind C = int PLAIN_FIVE 5"},
        {true, Variable, "*", "tentative", "int C"},
        {true, Variable, "*", "elsewhere", "int extern C"},
        {true, Variable, "*", "place", "restrict(pointer(volatile(int))) = address elsewhere"},
        {true, Variable, "*", "variable", "array[-1](int)"},
        {true, Variable, "*", "wave", "_Complex(double) C"},
        {true, Variable, "*", "shared", "_Atomic(int) C"},
        {true, Variable, "*", "here", "array[8](const(char)) C = string plain.c"},
        {false, Member, "Shape", "uses_", "int C++ protected mutable = int 0"},
        {false, Member, "Shape", "name_", "string C++ private"},
        {false, Member, "Shape", "flags_", "uint C++ private bits 3"},
        {false, Member, "Shape", "count", "int static C++ public = int 7"},
        {false, Member, "Square", "side_", "double C++ private = float 2.5"},
        {false, Member, "Word", "bytes", "array[4](uchar) C++ public"},
        {false, Member, "Box", "items", "array[-1](param T) C++ public"},
        {false, Member, "Box", "nested", "opaque typename T::value_type C++ public"},
        {false, Member, "Box", "list", "vector C++ public"},
        {false, Member, "Inner", "deep", "int public"},
        {true, Member, "point", "name", "pointer(const(char)) C public"},
        {true, Member, "point", "bits", "uint C public bits 5"},
        {true, Member, "", "inner", "int C public"},
        {false, Class, "*", "Shape", "C++ abstract"},
        {false, Class, "*", "Square", "C++ : virtual public Shape : private vector final"},
        {false, Struct, "*", "Empty", "C++ empty needs constructor needs copy constructor"},
        {false, Struct, "*", "EmptyToo", "C++ : public Empty empty needs constructor needs copy constructor"},
        {false, Union, "*", "Word", "C++ needs constructor needs copy constructor"},
        {false, Struct, "*", "Forward", "C++ needs constructor needs copy constructor"},
        {false, Class, "*", "Inspector", "C++ not defined"},
    };
    for (Row const& row : rows) {
        Entity const* const entity = findEntity(unit(row.isC), row.kind, row.name, row.owner);
        ASSERT_NE(entity, nullptr) << row.owner << "::" << row.name;
        EXPECT_EQ(factText(unit(row.isC), *entity), row.facts) << row.owner << "::" << row.name;
    }
    RecordFacts const& shape = *findEntity(*first, Class, "Shape")->as<RecordFacts>();
    EXPECT_EQ(shape.friendTypes, std::vector<Id>{findEntity(*first, Class, "Inspector")->id});
    EXPECT_EQ(shape.friendFunctions, std::vector<Id>{findEntity(*first, Function, "inspect")->id});
}

TEST_F(DeclarationFacts, ForwardDeclarationsAddPositionsToTheDefinition) {
    Entity const* const forward = findEntity(*first, EntityKind::Struct, "Forward");
    ASSERT_NE(forward, nullptr);
    ASSERT_TRUE(forward->definition.has_value());
    EXPECT_EQ(forward->definition->line, 11U);
    EXPECT_EQ(forward->definition->column, 8U);
    EXPECT_EQ(forward->declarations.size(), 1U);
    Entity const* const constructor = findEntity(*first, EntityKind::Method, "Shape");
    ASSERT_NE(constructor, nullptr);
    FunctionFacts const& facts = *constructor->as<FunctionFacts>();
    EXPECT_EQ(facts.optionalParameters, 1U) << "default arguments stand on the declaration";
    ASSERT_TRUE(facts.body.has_value());
    EXPECT_EQ(facts.body->start, (Position{facts.body->start.file, 8, 57}));
    EXPECT_EQ(facts.body->end, (Position{facts.body->start.file, 8, 58}));
}

TEST_F(DeclarationFacts, NamelessSiblingsStayApart) {
    std::size_t nameless = 0;
    std::size_t same = 0;
    std::size_t bitFields = 0;
    std::size_t standIns = 0;
    Id const point = findEntity(*plain, EntityKind::Struct, "point")->id;
    for (Entity const& entity : plain->entities) {
        bool const isRecord = entity.as<RecordFacts>() != nullptr;
        VariableFacts const* const field = entity.as<VariableFacts>();
        nameless += isRecord && entity.name.empty() ? 1 : 0;
        same += entity.name == "same" ? 1 : 0;
        bitFields += field && entity.name.empty() && field->bits ? 1 : 0;
        standIns += field && entity.name.empty() && !field->bits && entity.owner == point ? 1 : 0;
    }
    EXPECT_EQ(nameless, 5U);
    EXPECT_EQ(same, 2U);
    EXPECT_EQ(bitFields, 2U);
    EXPECT_EQ(standIns, 2U) << "members that the anonymous struct and union stand for";
}

TEST_F(DeclarationFacts, PrototypesAreDefinedByTheirDefinition) {
    Entity const* const later = findEntity(*first, EntityKind::Struct, "Later");
    ASSERT_NE(later, nullptr);
    EXPECT_TRUE(later->isPrototype);
    EXPECT_TRUE(later->isDefined);
    ASSERT_TRUE(later->definition.has_value());
    EXPECT_EQ(later->declarations.size(), 1U);
    EXPECT_NE(findEntity(*first, EntityKind::Member, "item", "Later"), nullptr);
}

TEST_F(DeclarationFacts, Enumerations) {
    Entity const* const colour = findEntity(*first, EntityKind::Enum, "Colour");
    ASSERT_NE(colour, nullptr);
    EnumFacts const& facts = *colour->as<EnumFacts>();
    EXPECT_TRUE(facts.isScoped);
    EXPECT_TRUE(facts.hasExplicitBase);
    EXPECT_EQ(facts.bits, 8U);
    EXPECT_EQ(typeText(*first, colour->type), "uchar");
    EXPECT_EQ(facts.enumerators,
              (std::vector<EnumeratorFact>{{"Red", "1", "///< like a rose"}, {"Green", "2", ""}}));
    EXPECT_EQ(colour->comments, std::vector<std::string>{"/// Colours of shapes."});
    Entity const* const unnamed = findEntity(*first, EntityKind::Enum, "");
    ASSERT_NE(unnamed, nullptr);
    EXPECT_FALSE(unnamed->as<EnumFacts>()->isScoped);
    EXPECT_FALSE(unnamed->as<EnumFacts>()->hasExplicitBase);
    EXPECT_EQ(unnamed->as<EnumFacts>()->enumerators[0].value, "-1");
}

TEST_F(DeclarationFacts, Templates) {
    struct Row {
        EntityKind prototype;
        char const* name;
        TemplateKind kind;
        char const* parameters;
        char const* arguments; // of the prototype
    };
    using enum EntityKind;
    Row const rows[] = {
        {Struct, "Box", TemplateKind::Class, "T N:int Rest...", "type T, value, pack, type Rest, "},
        {Method, "put", TemplateKind::MemberFunction, "U", "type U, "},
        {Function, "largest", TemplateKind::Function, "T", "type T, "},
        {Function, "countAll", TemplateKind::Function, "Args...", "pack, type Args, "},
        {Typedef, "Pair", TemplateKind::Unknown, "T", "type T, "},
    };
    for (Row const& row : rows) {
        Entity const* const entity = findEntity(*first, Template, row.name);
        ASSERT_NE(entity, nullptr) << row.name;
        TemplateFacts const& facts = *entity->as<TemplateFacts>();
        std::string parameters;
        for (TemplateParameterFact const& parameter : facts.parameters) {
            parameters += (parameters.empty() ? "" : " ") + parameter.name + (parameter.isPack ? "..." : "");
            if (!parameter.type.is_nil()) parameters.append(":").append(typeText(*first, parameter.type));
        }
        EXPECT_EQ(facts.kind, row.kind) << row.name;
        EXPECT_EQ(parameters, row.parameters) << row.name;
        Entity const* const prototype = findEntity(*first, row.prototype, row.name);
        ASSERT_NE(prototype, nullptr) << row.name;
        EXPECT_EQ(facts.prototype, prototype->id) << row.name;
        EXPECT_TRUE(prototype->isPrototype) << row.name;
        EXPECT_EQ(prototype->templateOf, entity->id) << row.name;
        EXPECT_EQ(prototype->owner, entity->owner) << row.name;
        std::string arguments;
        for (TemplateArgumentFact const& argument : prototype->arguments) {
            static constexpr char const* words[] = {"unknown", "type ", "value", "template", "pack"};
            arguments += words[static_cast<std::size_t>(argument.kind)];
            arguments += argument.kind == ArgumentKind::Type ? argument.name + ", " : ", ";
        }
        EXPECT_EQ(arguments, row.arguments) << row.name;
    }
    Entity const* const variable = findEntity(*first, Template, "zero");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable->as<TemplateFacts>()->kind, TemplateKind::Variable);
    // What is made of it for a type is no second template.
    EXPECT_EQ(std::count_if(first->entities.begin(), first->entities.end(),
                            [](Entity const& entity) { return entity.name == "zero"; }),
              1);
}

TEST_F(DeclarationFacts, InstantiationsHaveArgumentsAndFields) {
    Entity const* instantiation = nullptr;
    for (Entity const& entity : first->entities) {
        RecordFacts const* const record = entity.as<RecordFacts>();
        if (entity.name == "Box" && record && record->isInstantiated && entity.arguments.size() > 2 &&
            typeText(*first, entity.arguments[0].type) == "basic_string") {
            instantiation = &entity;
        }
    }
    ASSERT_NE(instantiation, nullptr);
    EXPECT_EQ(instantiation->templateOf, findEntity(*first, EntityKind::Template, "Box")->id);
    EXPECT_EQ(instantiation->arguments[1].value.value().value, "2");
    EXPECT_EQ(instantiation->arguments[2].kind, ArgumentKind::PackStart) << "an empty pack is a pack";
    EXPECT_EQ(instantiation->as<RecordFacts>()->contents.size(), 3U);
    Entity const* const largest = findEntity(*first, EntityKind::Template, "largest");
    bool hasFunction = false;
    for (Entity const& entity : first->entities) {
        hasFunction |= entity.templateOf == largest->id && !entity.isPrototype &&
                       typeText(*first, entity.arguments.at(0).type) == "int";
    }
    EXPECT_TRUE(hasFunction) << "a call of a function template refers to the instantiation";
}

std::string argumentText(UnitFacts const& facts, Entity const& entity) {
    std::string text;
    for (TemplateArgumentFact const& argument : entity.arguments) {
        text += text.empty() ? "" : ", ";
        if (argument.kind == ArgumentKind::PackStart) text += "pack";
        if (argument.kind == ArgumentKind::Type) text += typeText(facts, argument.type);
        if (!argument.parameter.is_nil()) text += typeText(facts, argument.parameter);
        if (argument.value) text += constantText(*argument.value);
    }
    return text;
}

TEST_F(DeclarationFacts, AliasesAndWrittenArguments) {
    UnitFacts const modern = parse("modern.cpp", {"-std=c++20"});
    ASSERT_FALSE(modern.hasErrors());
    struct Row {
        EntityKind kind;
        char const* name;
        char const* type;
        char const* arguments; // of the first specialisation in the type
        char const* behind;    // its own type, of a typedef
    };
    using enum EntityKind;
    Row const rows[] = {
        {Method, "attribute", "fn()->ref(const(Attribute))", "Word, Holder", "Entry"},
        {Method, "own", "fn(Word,pointer(const(Word)),)->Own", "bool", "Entry"},
        {Variable, "aliasOfItsName", "Cell", "int", "Cell"},
        {Variable, "classOfItsName", "Cell", "int", "none"},
        {Variable, "throughNamespaceAlias", "Attribute", "int, Holder", "Entry"},
        {Variable, "address", "Address", "Holder", "pointer(Holder)"},
        {Method, "same", "fn()->Path", "param Depth", "none"},
        {Method, "then", "fn(ref(const(Path)),Path,Entry,)->Path", "parameter Depth + Rest", "none"},
        {Method, "alias", "fn()->Address", "Path", "pointer(Path)"},
        {Variable, "deduced", "Deduced", "int, pack, long", "none"},
    };
    auto const find = [&](Id const& id) -> Entity const* {
        for (Entity const& entity : modern.entities)
            if (entity.id == id) return &entity;
        return nullptr;
    };
    for (Row const& row : rows) {
        Entity const* const entity = findEntity(modern, row.kind, row.name);
        ASSERT_NE(entity, nullptr) << row.name;
        EXPECT_EQ(typeText(modern, entity->type), row.type) << row.name;
        Entity const* made = find(entity->type);
        for (Id id = entity->type; !made;) {
            auto const type = std::find_if(modern.types.begin(), modern.types.end(),
                                           [&](TypeFact const& fact) { return fact.id == id; });
            ASSERT_NE(type, modern.types.end()) << row.name;
            made = find(id = type->base);
        }
        EXPECT_EQ(argumentText(modern, *made), row.arguments) << row.name;
        EXPECT_EQ(typeText(modern, made->type), row.behind) << row.name;
    }
    Entity const* const then = findEntity(modern, Method, "then");
    std::vector<std::string> arguments;
    for (TypeFact const& type : modern.types) {
        if (type.id != then->type) continue;
        for (std::size_t i = 1; i < type.parameters.size(); ++i)
            arguments.push_back(argumentText(modern, *find(type.parameters[i])));
    }
    EXPECT_EQ(arguments, (std::vector<std::string>{"parameter (Depth > 2)", "Path, int, int -3"}));
}

TEST_F(DeclarationFacts, ArgumentsThatNoTypeShowsComeFromMangledNames) {
    UnitFacts const modern = parse("modern.cpp", {"-std=c++20"});
    std::multiset<std::string> arguments;
    for (Entity const& entity : modern.entities) {
        bool const isAsked = entity.name == "is" || entity.name == "all" || entity.name == "of";
        if (isAsked && entity.kind == EntityKind::Method && !entity.isPrototype)
            arguments.insert(entity.name + ' ' + argumentText(modern, entity));
    }
    EXPECT_EQ(arguments, (std::multiset<std::string>{
                             "all char, pack, Outer, long", "is bool", "is pointer(const(ulong))",
                             "is ref(Holder)", "is opaque raw::Cell<raw::Cell<int>>", "of int -3, void"}));
}

TEST(MangledNames, AreTakenApart) {
    struct Row {
        char const* readable;
        char const* name;
        std::vector<std::string> arguments;
    };
    for (Row const& row : {
             Row{"bool A::is<bool>() const", "is", {"bool"}},
             Row{"void A<int>::is<B<char, 3>, -1>(C<int>)", "is", {"B<char, 3>", "-1"}},
             Row{"void (*A::is<int>(char))(long)", "is", {"int"}},
             Row{"A::is A::is<A::is>(A::is<int>)", "is", {"A::is"}},
             Row{"int A::operator()<char>(int) const", "operator()", {"char"}},
             Row{"int A::operator<< <char, void (*)(int, char)>(int)",
                 "operator<<",
                 {"char", "void (*)(int, char)"}},
             Row{"int A::is[abi:v1]<(n::E)2, (char)97>()", "is", {"(n::E)2", "(char)97"}},
             Row{"A<int>::A<char, void>(char)", "A", {"char", "void"}},
             Row{"int f(int)::{lambda(auto:1)#1}::operator()<int>(int) const", "operator()", {"int"}},
             Row{"int A::is<B<B<int> > >(int)", "is", {"B<B<int>>"}},
             Row{"int A::is<>(int)", "is", {}},
             Row{"int A::is(B<int>)", "is", {}},
             Row{"A::data", "data", {}},
         })
        EXPECT_EQ(readableArguments(row.readable, row.name), row.arguments) << row.readable;
}

TEST_F(DeclarationFacts, OverloadsThatDifferInConstraintsStayApart) {
    UnitFacts const modern = parse("modern.cpp", {"-std=c++20"});
    struct Row {
        char const* name;
        std::vector<std::size_t> positions; // of each template with that name
    };
    for (Row const& row : {Row{"show", {2, 1, 1}}, Row{"brief", {1, 1}},
                           Row{"<deduction guide for Deduced>", {1}}, Row{"Deduced", {1}}}) {
        std::vector<std::size_t> positions;
        for (Entity const& entity : modern.entities) {
            if (entity.kind != EntityKind::Template || entity.name != row.name) continue;
            positions.push_back(entity.declarations.size() + (entity.definition ? 1 : 0));
            TemplateFacts const& facts = *entity.as<TemplateFacts>();
            bool const isAbbreviated = entity.name == "brief";
            EXPECT_EQ(facts.parameters.empty(), isAbbreviated) << row.name;
            auto const prototype =
                std::find_if(modern.entities.begin(), modern.entities.end(),
                             [&](Entity const& candidate) { return candidate.id == facts.prototype; });
            ASSERT_NE(prototype, modern.entities.end()) << row.name;
            EXPECT_TRUE(prototype->isPrototype) << row.name;
            EXPECT_EQ(prototype->arguments.empty(), isAbbreviated) << row.name;
        }
        EXPECT_EQ(positions, row.positions) << row.name;
    }
    Entity const* scan = nullptr;
    for (Entity const& entity : modern.entities)
        if (entity.name == "scan" && entity.kind == EntityKind::Method && !entity.isPrototype) scan = &entity;
    ASSERT_NE(scan, nullptr);
    EXPECT_EQ(argumentText(modern, *scan), "int, long") << "deduced from the types of the parameters";
}

TEST_F(DeclarationFacts, LambdasHoldWhatIsInsideThem) {
    Entity const* closure = nullptr;
    for (Entity const& entity : first->entities) {
        RecordFacts const* const record = entity.as<RecordFacts>();
        if (record && record->isLambda) closure = &entity;
    }
    ASSERT_NE(closure, nullptr);
    EXPECT_EQ(closure->name, "");
    EXPECT_EQ(closure->owner, findEntity(*first, EntityKind::Function, "run")->id);
    Entity const* const call = findEntity(*first, EntityKind::Method, "operator()");
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(call->owner, closure->id);
    Entity const* const inner = findEntity(*first, EntityKind::Struct, "Inner");
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->owner, call->id);
}

TEST_F(DeclarationFacts, Namespaces) {
    struct Row {
        char const* name;
        bool isInline, isStd;
        char const* alias;
    };
    for (Row const& row :
         {Row{"shapes", false, false, ""}, Row{"v1", true, false, ""}, Row{"std", false, true, ""},
          Row{"alias", false, false, "shapes"}, Row{"", false, false, ""}}) {
        Entity const* const entity = findEntity(*first, EntityKind::Namespace, row.name);
        ASSERT_NE(entity, nullptr) << row.name;
        NamespaceFacts const& facts = *entity->as<NamespaceFacts>();
        EXPECT_EQ(facts.isInline, row.isInline) << row.name;
        EXPECT_EQ(facts.isStd, row.isStd) << row.name;
        EXPECT_EQ(facts.alias.is_nil() ? "" : typeText(*first, facts.alias), row.alias) << row.name;
    }
}

TEST_F(DeclarationFacts, SystemHeadersOnlyAsFarAsReferenced) {
    Entity const* const size = findEntity(*first, EntityKind::Method, "size", "basic_string");
    ASSERT_NE(size, nullptr) << "a body calls it";
    EXPECT_FALSE(size->inProject);
    EXPECT_FALSE(size->as<FunctionFacts>()->body.has_value());
    EXPECT_EQ(findEntity(*first, EntityKind::Method, "find_first_of", "basic_string"), nullptr)
        << "nothing does";
    std::size_t stubs = 0;
    for (Entity const& entity : first->entities)
        stubs += entity.inProject ? 0 : 1;
    EXPECT_LT(stubs, 40U) << "the headers hold thousands of declarations";
    for (Entity const& entity : first->entities) {
        if (entity.inProject || !entity.as<RecordFacts>()) continue;
        EXPECT_TRUE(entity.as<RecordFacts>()->bases.empty()) << entity.name;
    }
}

TEST_F(DeclarationFacts, EveryReferenceHasItsTarget) {
    for (UnitFacts const* const facts : {first, plain}) {
        for (TypeFact const& type : facts->types) {
            EXPECT_NE(typeText(*facts, type.base), "?") << static_cast<int>(type.kind);
            for (Id const& parameter : type.parameters)
                EXPECT_NE(typeText(*facts, parameter), "?");
        }
        for (Entity const& entity : facts->entities) {
            EXPECT_NE(typeText(*facts, entity.type), "?") << entity.name;
            EXPECT_NE(typeText(*facts, entity.owner), "?") << entity.name;
            EXPECT_NE(typeText(*facts, entity.templateOf), "?") << entity.name;
        }
    }
}

} // namespace
} // namespace zelkor::producer::test
