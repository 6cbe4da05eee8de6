// Writes models in both forms into a folder, for the test that holds saved files against the descriptions.

#include "io/SampleModel.hpp"

#include <iostream>

namespace {

namespace za = zelkor::ast;

/// What the common sample does not have: texts that need encoding, placeholders, references among children.
za::Ast makeOddModel() {
    za::Ast ast;
    auto const model = ast.getModel();
    auto const scope = za::Scope::create(model);
    auto const function = za::Function::create(model);
    auto const variable = za::Variable::create(model);
    scope.getSymbolsMutable().add(function);
    scope.getSymbolsMutable().add(variable);
    scope.getSymbolsMutable().add(function);
    function.setName("\xff");
    function.getCommentsMutable().push_back(u"\xD800");
    function.getCommentsMutable().push_back(u"\x01");
    za::Comment::create(model).setText(std::u16string(u"\xDC00\0", 2));
    brant::zero::ProxyId const id{u"uri", u"\x02", std::make_shared<std::u16string>(u"far")};
    auto const placeholder = model.createProxy(za::types::StructType::metaClass(), id);
    function.setType(za::types::Type::cast(placeholder));
    function.getBefriendingAggregatesMutable().add(za::types::AggregateType::cast(placeholder));
    return ast;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " FOLDER\n";
        return 2;
    }
    std::string const folder = argv[1];
    std::pair<char const*, za::Ast> models[] = {
        {"empty", za::Ast()}, {"sample", zelkor::test::makeSampleModel()}, {"odd", makeOddModel()}};
    for (auto& [name, ast] : models)
        for (auto const& [ending, format] :
             {std::pair("json", za::io::IoFormat::json), std::pair("xml", za::io::IoFormat::xml)}) {
            std::string const path = folder + "/" + name + "." + ending;
            za::io::serializeToFile(ast, std::u16string(path.begin(), path.end()), format);
        }
}
