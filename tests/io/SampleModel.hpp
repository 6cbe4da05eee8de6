// A model in which every concrete class and every property that texts have occurs.
#pragma once

#include <zelkor/ast.hpp>
#include <zelkor/ast/io.hpp>

namespace zelkor::test {

/// A project that holds everything, with identities that are the same in each run.
zelkor::ast::Ast makeSampleModel();

/// \returns a sentence on the first difference between the texts of the two models, or nothing.
std::string difference(zelkor::ast::Ast a, zelkor::ast::Ast b);

} // namespace zelkor::test
