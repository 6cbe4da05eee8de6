// Enumerations of the facts as those of the model.
#pragma once

#include "Facts.hpp"

#include <zelkor/ast.hpp>

namespace zelkor::producer {

zelkor::ast::types::IntegerKind toModel(IntegerKind kind);
zelkor::ast::types::AccessSpecifierKind toModel(Access access);
zelkor::ast::LinkageKind toModel(Linkage linkage);
zelkor::ast::StorageClassKind toModel(StorageClass storage);

} // namespace zelkor::producer
