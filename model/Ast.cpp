#include "zelkor/ast/Ast.hpp"

namespace zelkor::ast {

namespace {

brant::zero::Model newModel() {
    return brant::zero::Model::create(boost::uuids::uuid{}, brant::zero::ModelConstellation(),
                                      brant::zero::DefaultWorkQueueFactory());
}

} // namespace

Ast::Ast() : model_(newModel()) {}
Ast::Ast(brant::zero::Model model) : model_(model ? std::move(model) : newModel()) {}

} // namespace zelkor::ast
