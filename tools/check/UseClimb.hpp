// From a name in an expression upwards: what becomes of it, and in whose body. The producer goes the other
// way, from the body down; the two agree when both understand the language.
#pragma once

#include <clang-c/Index.h>

#include <cstddef>
#include <vector>

namespace zelkor::producer::test {

struct Step {
    CXCursor cursor;
    CXCursorKind kind;
    std::size_t index;     // among the children of its parent that are expressions or statements
    CXCursorKind previous; // kind of the child before it, or an invalid one
};
// From the outermost declaration to the name.
using Path = std::vector<Step>;

struct Outcome {
    bool isRead = false;
    bool isWritten = false;
    bool isAddressed = false;
    bool isCalled = false;
};

Outcome outcomeOf(Path const& path);

// Whether everything around it is evaluated, up to its owner.
bool isEvaluated(Path const& path);

// The function, closure (by its expression), parameter with a default argument, or variable outside of
// functions, in which it stands; null for none.
CXCursor ownerOf(Path const& path);

bool isFunctionKind(CXCursorKind kind);

} // namespace zelkor::producer::test
