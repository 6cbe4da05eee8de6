// Builds a model, saves it, loads it and tells what came back.
#include <zelkor/ast.hpp>

#include <iostream>
#include <string>

namespace za = zelkor::ast;

std::string className(brant::zero::ModelElement const& element) {
    return brant::zero::toUtf8(element.getMetaClass().getName());
}

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::string const name = argv[1];
    std::u16string const path(name.begin(), name.end());

    za::Ast made;
    brant::zero::Model const model = made.getModel();
    brant::zero::Transaction transaction = model.beginTransaction();
    za::Project const project = za::Project::create(model);
    za::source::CompilationUnit const unit = za::source::CompilationUnit::create(model);
    za::Function const function = za::Function::create(model);
    za::types::PointerType const pointer = za::types::PointerType::create(model);
    function.setName("answer");
    function.setSpecialKind(za::SpecialFunctionKind::Constructor);
    function.setType(pointer);
    project.getCompilationsMutable().add(unit);
    unit.getSymbolsMutable().add(function);
    unit.getTypesMutable().add(pointer);
    transaction.commit();

    za::io::serializeToFile(made, path, za::io::IoFormat::json);
    za::Ast const loaded = za::io::deserializeFromFile(path, za::io::IoFormat::json);
    for (za::source::CompilationUnit const& in : loaded.getProject().getCompilations())
        for (za::Function const& found : in.getFuns())
            std::cout << className(found) << ' ' << found.getName() << ": " << className(found.getType())
                      << '\n';

    try {
        (void)za::io::deserializeFromUTF8String("{]", za::io::IoFormat::json);
    } catch (brant::zero::io::ParseError const& error) {
        // Thrown in the library, caught here: its type is the same on both sides.
        std::cout << "refused at " << error.getLine() << ':' << error.getColumn() << '\n';
    }
}
