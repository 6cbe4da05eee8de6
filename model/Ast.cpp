#include "zelkor/ast/Ast.hpp"

#include "zelkor/ast/MetaPackageZelkor_ast.hpp"

namespace zelkor::ast {

namespace {

brant::zero::Model newModel() {
    MetaPackageZelkor_ast::getInstance(); // readers find classes by name, so the description must stand
    return brant::zero::Model::create(boost::uuids::uuid{}, brant::zero::ModelConstellation(),
                                      brant::zero::DefaultWorkQueueFactory());
}

} // namespace

Ast::Ast() : model_(newModel()) {}
Ast::Ast(brant::zero::Model model) : model_(model ? std::move(model) : newModel()) {}

} // namespace zelkor::ast
