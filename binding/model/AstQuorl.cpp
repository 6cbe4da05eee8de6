#include "AstQuorl.hpp"

#include "brant/zero/mi/ElementMarshaler.hpp"
#include "brant/zero/mi/EnumMarshaler.hpp"
#include "brant/zero/mi/Methods.hpp"
#include "zelkor/ast/io.hpp"

namespace {

constexpr char astClassName[] = "internal.zelkor.ast.Ast";
constexpr char formatClassName[] = "internal.zelkor.ast.io.IoFormat";
constexpr char textType[] = "QuorlFactoryString scalar";

using zelkor::ast::Ast;

/// \returns the value in the array, null when its place is empty. \throws InvalidHandle for an object whose
/// constructor has not run.
Ast* findAst(krelArray const& array) {
    quorl::QuorlObject const* const object =
        omGetNumberOfElements(array) == 1 ? omGetArrayElement(array, 0) : nullptr;
    return object == nullptr ? nullptr
                             : static_cast<Ast*>(quorl::factory::impl::validateSelfPointer(*object));
}

Ast& astOf(krelArray const& array) {
    Ast* const ast = findAst(array);
    if (ast == nullptr) quorl::raise<quorl::messages::InvalidHandle>();
    return *ast;
}

quorl::ArrayPtr astArray(Ast ast) {
    auto& quorlClass = quorl::QuorlClass::requireClass(quorl::internal::makeInterned(astClassName));
    quorl::ArrayPtr array = omCreateQuorlScalar(quorl::QuorlObject::allocate(quorlClass));
    quorl::factory::CopyableDataTypeClassInfo<Ast>::construct(*array, std::move(ast));
    return array;
}

zelkor::ast::io::IoFormat formatOf(krelArray const& array) {
    std::vector<std::int32_t> const numbers = brant::zero::mi::literalNumbers(array, formatClassName);
    if (numbers.size() != 1)
        quorl::raise<brant0::messages::CannotCastIncompatibleTypes>(std::string(formatClassName));
    return static_cast<zelkor::ast::io::IoFormat>(numbers[0]);
}

bool adaptedEquals(Ast const* a, Ast const* b) {
    if (a == nullptr || b == nullptr) return a == b;
    return *a == *b;
}

} // namespace

namespace quorl::factory {

template <>
struct ValueTraits<Ast> {
    static constexpr char const* typeName = astClassName;
    static ArrayPtr toArray(Ast ast) { return astArray(std::move(ast)); }
    static Ast fromArray(krelArray const& value, QuorlType const& type, std::string_view where) {
        return astOf(*QuorlTypeRepository::getInstance().convert(value, type, where));
    }
};

template <>
struct ValueTraits<brant::zero::Model> {
    static constexpr char const* typeName = brant::zero::mi::modelClassName;
    static ArrayPtr toArray(brant::zero::Model const& model) { return brant::zero::mi::toArray(model); }
};

template <>
struct ValueTraits<zelkor::ast::Project> {
    static constexpr char const* typeName = "internal.zelkor.ast.Project";
    static ArrayPtr toArray(zelkor::ast::Project const& project) {
        return brant::zero::mi::toArray(project, zelkor::ast::Project::Impl::table);
    }
};

} // namespace quorl::factory

namespace zelkor::mi::ast {

namespace {

using brant::zero::mi::PlainMethod;
using quorl::Inputs;
using quorl::Outputs;
using quorl::factory::impl::AdaptedClassGetter;
using quorl::factory::impl::AdaptedClassSetter;
using quorl::factory::impl::Invoker;
using quorl::factory::impl::PropertyImpl;

constexpr unsigned selfCopyingAttributes = 2144;

Ast getSelfProperty(Ast* self) {
    return *self;
}
void setSelfProperty(Ast* self, Ast value) {
    *self = std::move(value);
}

template <class V>
std::unique_ptr<PropertyImpl> readOnly(char const* name, V (*get)(Ast*)) {
    return std::make_unique<PropertyImpl>(name, 0u,
                                          std::make_unique<AdaptedClassGetter<V, Ast, V (*)(Ast*)>>(get));
}

template <class... Types>
void addMethod(quorl::QuorlClass& quorlClass, char const* name, unsigned attributes, PlainMethod::Body body,
               char const* output, Types... inputs) {
    quorlClass.addMethod(std::make_unique<PlainMethod>(
        name, attributes, Invoker::createSignature(output, "result", inputs...), body));
}

void addComparisons(quorl::QuorlClass& quorlClass) {
    for (char const* const name : {"eq", "isequal", "isequaln"})
        addMethod(
            quorlClass, name, quorl::methodPlain,
            [](Outputs& outputs, Inputs inputs) {
                bool const equal = adaptedEquals(findAst(*inputs[0]), findAst(*inputs[1]));
                outputs.push_back(omCreateNumericScalar<bool>(equal));
            },
            "logical scalar", astClassName, astClassName);
}

void addConstructors(quorl::QuorlClass& quorlClass) {
    auto const construct = [&](char const* input, PlainMethod::Body body) {
        addMethod(quorlClass, "Ast", quorl::methodConstructor, body, astClassName, input);
    };
    construct("void", [](Outputs& outputs, Inputs) { AstQuorl::construct(*outputs[0], Ast()); });
    construct(brant::zero::mi::modelClassName, [](Outputs& outputs, Inputs inputs) {
        AstQuorl::construct(*outputs[0], Ast(brant::zero::mi::modelOf(*inputs[0])));
    });
}

void addReaders(quorl::QuorlClass& quorlClass) {
    namespace io = zelkor::ast::io;
    auto const add = [&](char const* name, char const* input, PlainMethod::Body body) {
        addMethod(quorlClass, name, quorl::methodStatic, body, astClassName, input, formatClassName);
    };
    add("deserializeFromFile", textType, [](Outputs& outputs, Inputs inputs) {
        outputs.push_back(astArray(
            io::deserializeFromFile(quorl::factory::extractString(*inputs[0]), formatOf(*inputs[1]))));
    });
    add("deserializeFromUTF8String", "char", [](Outputs& outputs, Inputs inputs) {
        outputs.push_back(
            astArray(io::deserializeFromUTF8String(omGetChars(*inputs[0]), formatOf(*inputs[1]))));
    });
    add("deserializeFromUTF16String", textType, [](Outputs& outputs, Inputs inputs) {
        outputs.push_back(astArray(
            io::deserializeFromUTF16String(quorl::factory::extractString(*inputs[0]), formatOf(*inputs[1]))));
    });
}

void addWriters(quorl::QuorlClass& quorlClass) {
    namespace io = zelkor::ast::io;
    addMethod(
        quorlClass, "serializeToFile", quorl::methodStatic,
        [](Outputs&, Inputs inputs) {
            io::serializeToFile(astOf(*inputs[0]), quorl::factory::extractString(*inputs[1]),
                                formatOf(*inputs[2]));
        },
        "void", astClassName, textType, formatClassName);
    addMethod(
        quorlClass, "serializeToUTF8String", quorl::methodStatic,
        [](Outputs& outputs, Inputs inputs) {
            outputs.push_back(
                omCreateCharArray(io::serializeToUTF8String(astOf(*inputs[0]), formatOf(*inputs[1]))));
        },
        "char", astClassName, formatClassName);
    addMethod(
        quorlClass, "serializeToUTF16String", quorl::methodStatic,
        [](Outputs& outputs, Inputs inputs) {
            outputs.push_back(
                omCreateStringScalar(io::serializeToUTF16String(astOf(*inputs[0]), formatOf(*inputs[1]))));
        },
        textType, astClassName, formatClassName);
}

} // namespace

AstQuorl::AstQuorl() : CopyableDataTypeClassInfo(astClassName) {}

void AstQuorl::initializeClass(quorl::QuorlClass* quorlClass) {
    quorl::factory::detail::initStringDataTypes();
    addComparisons(*quorlClass);
    quorlClass->addProperty(std::make_unique<PropertyImpl>(
        "selfCopyingProperty", selfCopyingAttributes,
        std::make_unique<AdaptedClassGetter<Ast, Ast, Ast (*)(Ast*)>>(&getSelfProperty),
        std::make_unique<AdaptedClassSetter<Ast, Ast, void (*)(Ast*, Ast)>>(&setSelfProperty)));
    addConstructors(*quorlClass);
    quorlClass->addProperty(
        readOnly<brant::zero::Model>("Model", [](Ast* self) { return self->getModel(); }));
    quorlClass->addProperty(
        readOnly<zelkor::ast::Project>("Project", [](Ast* self) { return self->getProject(); }));
    addReaders(*quorlClass);
    addWriters(*quorlClass);
}

namespace io {

namespace {

using zelkor::ast::io::IoFormat;

// No enumeration of the schema, but one for scripts.
constinit brant::zero::schema::LiteralRow const literals[] = {
    {"xml", "", static_cast<std::int64_t>(IoFormat::xml), nullptr},
    {"json", "", static_cast<std::int64_t>(IoFormat::json), nullptr},
};
constinit brant::zero::schema::EnumTable const table = {
    .name = "IoFormat",
    .qualifiedName = "zelkor.ast.io.IoFormat",
    .nativeName = "zelkor::ast::io::IoFormat",
    .scriptName = formatClassName,
    .identity = "",
    .literals = literals,
    .literalCount = 2,
    .registerType = nullptr,
    .object = nullptr,
};

} // namespace

IoFormatQuorl::IoFormatQuorl() : EnumWrapperInfo(table) {}

} // namespace io

} // namespace zelkor::mi::ast
