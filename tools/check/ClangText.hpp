// What the front end says, as plain values.
#pragma once

#include <clang-c/Index.h>

#include <string>
#include <vector>

namespace zelkor::producer::test {

inline std::string take(CXString string) {
    char const* const text = clang_getCString(string);
    std::string copy = text ? text : "";
    clang_disposeString(string);
    return copy;
}

std::string plainName(CXCursor cursor);
std::vector<CXCursor> childrenOf(CXCursor cursor);

} // namespace zelkor::producer::test
