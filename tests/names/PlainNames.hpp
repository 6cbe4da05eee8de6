/// \file
/// The rules of names once more, written for the reader: recursion, strings, regular expressions. The oracle
/// for random models without cycles.
#pragma once

#include "names/NameSupport.hpp"

namespace testnames::plain {

std::string typeName(zt::Type const& type, std::string const& declared, bool skipTypedefs);
std::string scopeName(za::Scope const& scope);
std::string symbolName(za::Symbol const& symbol);
std::string argumentName(za::TemplateArg const& argument, bool afterPackMark);
std::string signature(za::Symbol const& symbol);

} // namespace testnames::plain
