#pragma once

#include <clang-c/Index.h>

#include <string>

namespace zelkor::producer::test {

inline std::string take(CXString string) {
    char const* const text = clang_getCString(string);
    std::string copy = text ? text : "";
    clang_disposeString(string);
    return copy;
}

} // namespace zelkor::producer::test
