// What mangled names tell of functions and the front end's interface does not.
#pragma once

#include "Clang.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace zelkor::producer {

// The template arguments of a member function as its mangled name has them, types by canonical names with
// qualifiers behind them, the elements of packs one by one. Nothing for what has no mangled name, such as
// what depends on a template parameter. `name` is the function's own.
std::vector<std::string> mangledArguments(CXCursor function, std::string_view name);

// The same from a mangled name that was made readable.
std::vector<std::string> readableArguments(std::string_view readable, std::string_view name);

} // namespace zelkor::producer
