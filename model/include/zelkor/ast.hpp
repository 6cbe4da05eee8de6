/// \file
/// Everything: all element classes and enumerations, `Ast`, reading and writing.
#pragma once

#include "zelkor/ast/All.hpp"
#include "zelkor/ast/Ast.hpp"
#include "zelkor/ast/FinderOptions.hpp"
#include "zelkor/ast/MetaPackageZelkor_ast.hpp"
#include "zelkor/ast/io.hpp"

#include "brant/zero.hpp"
