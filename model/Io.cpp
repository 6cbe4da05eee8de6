#include "zelkor/ast/io.hpp"

#include "brant/zero/io/Parser.hpp"
#include "brant/zero/io/Serializer.hpp"
#include "zelkor/ast/MetaPackageZelkor_ast.hpp"

#include <memory>

namespace zelkor::ast {

struct AstAccess {
    static brant::zero::Model& model(Ast& ast) noexcept { return ast.model_; }
    static Project& project(Ast& ast) noexcept { return ast.project_; }
};

namespace io {

namespace {

namespace zio = brant::zero::io;

std::unique_ptr<zio::Serializer> makeSerializer(IoFormat format) {
    std::unique_ptr<zio::Serializer> serializer;
    if (static_cast<std::uint32_t>(format) == 0)
        serializer = std::make_unique<zio::JSONSerializer>();
    else
        serializer = std::make_unique<zio::XmlSerializer>();
    serializer->customizer().setShouldSkipDefaultValues(true);
    return serializer;
}

std::unique_ptr<zio::Parser> makeParser(IoFormat format, Ast& ast) {
    // A text names classes; they must be known before it is read.
    MetaPackageZelkor_ast::getInstance();
    std::unique_ptr<zio::Parser> parser;
    if (static_cast<std::uint32_t>(format) == 0)
        parser = std::make_unique<zio::JSONParser>();
    else
        parser = std::make_unique<zio::XmlParser>();
    if (&parser->targetModel() != &AstAccess::model(ast)) parser->targetModel() = AstAccess::model(ast);
    return parser;
}

void adoptProject(Ast& ast) {
    brant::zero::Model const model = AstAccess::model(ast);
    for (brant::zero::ModelElement const& element : model.getTopLevelElements())
        if (element.getMetaClass() == Project::metaClass()) {
            AstAccess::project(ast) = Project::cast(element);
            return;
        }
}

template <class Text>
Ast deserialize(IoFormat format, Text const& parse) {
    Ast result;
    std::unique_ptr<zio::Parser> const parser = makeParser(format, result);
    parse(*parser);
    adoptProject(result);
    return result;
}

} // namespace

void serializeToFile(Ast& ast, std::u16string const& path, IoFormat format) {
    std::unique_ptr<zio::Serializer> const serializer = makeSerializer(format);
    std::string const name = "brant0::cpp";
    brant::zero::log::Span const span = brant::zero::log::Span::create(name);
    zio::SerializationOutput const output = zio::SerializationOutput::forFile(path, span);
    brant::zero::Model const model = AstAccess::model(ast);
    serializer->serialize(model, output);
}

std::string serializeToUTF8String(Ast& ast, IoFormat format) {
    std::string result;
    std::unique_ptr<zio::Serializer> const serializer = makeSerializer(format);
    zio::SerializationOutput const output = zio::SerializationOutput::forUTF8String(result);
    brant::zero::Model const model = AstAccess::model(ast);
    serializer->serialize(model, output);
    return result;
}

std::u16string serializeToUTF16String(Ast& ast, IoFormat format) {
    std::u16string result;
    std::unique_ptr<zio::Serializer> const serializer = makeSerializer(format);
    zio::SerializationOutput const output = zio::SerializationOutput::forUTF16String(result);
    brant::zero::Model const model = AstAccess::model(ast);
    serializer->serialize(model, output);
    return result;
}

Ast deserializeFromFile(std::u16string const& path, IoFormat format) {
    return deserialize(format,
                       [&](zio::Parser& parser) { parser.parseFile(path, zio::Parser::UpdateModelURI::No); });
}
Ast deserializeFromUTF8String(std::string const& text, IoFormat format) {
    return deserialize(format, [&](zio::Parser& parser) { parser.parseString(text); });
}
Ast deserializeFromUTF16String(std::u16string const& text, IoFormat format) {
    return deserialize(format, [&](zio::Parser& parser) { parser.parseString(text); });
}

} // namespace io
} // namespace zelkor::ast
