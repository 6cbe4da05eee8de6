/// \file
/// Which class of type is written how: one line per class.
#pragma once

#include "zelkor/ast/types/FloatType.hpp"
#include "zelkor/ast/types/IntegerType.hpp"

#include <string>

namespace zelkor::ast::names {

/// The ways to write a type.
enum class TypeRule : std::uint8_t {
    Nothing,
    // Types that end the walk inward.
    Void,
    Error,
    Opaque,
    Boolean,
    NullPtr,
    Integer,
    Float,
    Enum,
    Union,
    Struct,
    Aggregate,
    TemplateParam,
    // Layers.
    Typedef,
    Transparent, ///< attributes and type operators
    Vector,
    Array,
    Qualified,
    Pointer,
    Reference,
    RValueReference,
    Function
};

/// \returns the rule of a class of types. Constant time.
[[nodiscard]] TypeRule ruleOf(brant::zero::schema::ClassTable const& table) noexcept;

void appendIntegerWords(std::string& out, types::IntegerKind kind, bool isSigned);
/// Writes nothing for a number that stands for no kind.
void appendFloatWords(std::string& out, types::FloatKind kind);

} // namespace zelkor::ast::names
