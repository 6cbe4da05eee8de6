// What the things around an expression do to it: the table of docs/insight.md.
#pragma once

#include "Clang.hpp"
#include "Identity.hpp"

namespace zelkor::producer {

// A set of the bits below.
using Effect = unsigned;
namespace effect {
constexpr Effect none = 0;
constexpr Effect read = 1;
constexpr Effect write = 2;
constexpr Effect address = 4;
constexpr Effect callee = 8;  // a function of that name is called
constexpr Effect hidden = 16; // nothing below is evaluated
} // namespace effect

// What happens to the value of an expression, and to the elements of an array that turns into a pointer.
struct Expectation {
    Effect value = effect::read;
    Effect element = effect::address;
    bool keepsSink = false; // what takes the value of the parent takes this one too
};

// A cursor on the way down, with what its children need to know.
struct Frame {
    CXCursor cursor{};
    CXCursorKind kind = CXCursor_FirstInvalid;
    Expectation expected;
    Id owner{};               // whose uses these are
    Id sink{};                // the variable that takes the value
    unsigned expressions = 0; // children so far that are expressions
    CXCursor partner{};       // function of a call, member of a member expression, initialiser of a variable
    CXType type{};            // of a call: the function's; of a variable or cast: its own
    bool isPlainCast = false; // of a call: the result is the argument
    Effect pending = effect::none; // for the initialiser after a member's name, for the range of a loop
};

// What is done to an object that a variable, parameter, member or result of that type is initialised with.
Effect bindingEffect(CXType declared);

// What a member function does to its object.
Effect objectEffect(CXCursor method);

// What `parent` does to a child that is an expression; counts the child.
Expectation expectChild(Frame& parent, CXCursor child, CXCursorKind kind);

bool isArrayType(CXType type);

} // namespace zelkor::producer
