/// \file
/// Queries on models; see docs/queries.md. Not part of "zelkor/ast.hpp": only who asks queries compiles them.
#pragma once

#include "brant/zero/query/Query.hpp"

namespace zelkor::ast {

using brant::zero::query::Condition;
using brant::zero::query::isA;
using brant::zero::query::Pattern;
using brant::zero::query::query;
using brant::zero::query::Query;
using brant::zero::query::satisfies;

} // namespace zelkor::ast
