// What functions and initialisers use, as plain data.
#pragma once

#include "Identity.hpp"

#include <array>
#include <cstddef>
#include <vector>

namespace zelkor::producer {

enum class UseKind { Call, Read, Write, Address, Type, Macro };
inline constexpr std::size_t useKindCount = 6;

// A variable that was made to point at a function or another variable.
struct PointerFact {
    Id pointer{};
    Id target{};

    friend bool operator==(PointerFact const&, PointerFact const&) = default;
};

struct UseFacts {
    Id owner{};                                      // a function, or a variable by its initialiser
    std::array<std::vector<Id>, useKindCount> lists; // each without repetition, in the order of first use
    std::vector<PointerFact> pointers;
    bool hasBody = false; // or an initialiser; a declaration alone has no more than types
    bool hasAssembler = false;

    std::vector<Id>& of(UseKind kind) { return lists[static_cast<std::size_t>(kind)]; }
    std::vector<Id> const& of(UseKind kind) const { return lists[static_cast<std::size_t>(kind)]; }
};

struct OverrideFact {
    Id method{};
    Id overridden{};

    friend bool operator==(OverrideFact const&, OverrideFact const&) = default;
};

} // namespace zelkor::producer
