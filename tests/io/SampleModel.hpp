// A model in which every concrete class and every property that texts have occurs.
#pragma once

#include <zelkor/ast.hpp>
#include <zelkor/ast/io.hpp>

namespace zelkor::test {

/// One element of each class as it is made, and one in which every property is set.
zelkor::ast::Ast makeSampleModel();

/// \returns a sentence on the first difference between the texts of the two models, or nothing.
std::string difference(zelkor::ast::Ast a, zelkor::ast::Ast b);

} // namespace zelkor::test
