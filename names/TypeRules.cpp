#include "TypeRules.hpp"

#include "zelkor/ast/types/AggregateType.hpp"
#include "zelkor/ast/types/ArrayType.hpp"
#include "zelkor/ast/types/BooleanType.hpp"
#include "zelkor/ast/types/ClassType.hpp"
#include "zelkor/ast/types/EnumType.hpp"
#include "zelkor/ast/types/ErrorType.hpp"
#include "zelkor/ast/types/FunctionType.hpp"
#include "zelkor/ast/types/LValueReferenceType.hpp"
#include "zelkor/ast/types/NullPtrType.hpp"
#include "zelkor/ast/types/OpaqueType.hpp"
#include "zelkor/ast/types/PointerToMemberType.hpp"
#include "zelkor/ast/types/PointerType.hpp"
#include "zelkor/ast/types/QualifiedType.hpp"
#include "zelkor/ast/types/RValueReferenceType.hpp"
#include "zelkor/ast/types/StructType.hpp"
#include "zelkor/ast/types/TemplateParamType.hpp"
#include "zelkor/ast/types/TypeAttrType.hpp"
#include "zelkor/ast/types/TypeOpType.hpp"
#include "zelkor/ast/types/TypedefType.hpp"
#include "zelkor/ast/types/UnionType.hpp"
#include "zelkor/ast/types/VectorType.hpp"
#include "zelkor/ast/types/VoidType.hpp"

#include <array>
#include <string_view>

namespace zelkor::ast::names {

namespace {

struct ClassRule {
    brant::zero::schema::ClassTable const* table;
    TypeRule rule;
};

// A class is written as itself or not at all: subclasses have a line of their own. The most frequent come
// first.
constexpr ClassRule rules[] = {
    {&types::PointerType::Impl::table, TypeRule::Pointer},
    {&types::QualifiedType::Impl::table, TypeRule::Qualified},
    {&types::TypedefType::Impl::table, TypeRule::Typedef},
    {&types::ClassType::Impl::table, TypeRule::Struct},
    {&types::StructType::Impl::table, TypeRule::Struct},
    {&types::LValueReferenceType::Impl::table, TypeRule::Reference},
    {&types::IntegerType::Impl::table, TypeRule::Integer},
    {&types::TemplateParamType::Impl::table, TypeRule::TemplateParam},
    {&types::FunctionType::Impl::table, TypeRule::Function},
    {&types::VoidType::Impl::table, TypeRule::Void},
    {&types::BooleanType::Impl::table, TypeRule::Boolean},
    {&types::EnumType::Impl::table, TypeRule::Enum},
    {&types::FloatType::Impl::table, TypeRule::Float},
    {&types::ArrayType::Impl::table, TypeRule::Array},
    {&types::RValueReferenceType::Impl::table, TypeRule::RValueReference},
    {&types::TypeOpType::Impl::table, TypeRule::Transparent},
    {&types::TypeAttrType::Impl::table, TypeRule::Transparent},
    {&types::OpaqueType::Impl::table, TypeRule::Opaque},
    {&types::UnionType::Impl::table, TypeRule::Union},
    {&types::PointerToMemberType::Impl::table, TypeRule::Pointer},
    {&types::VectorType::Impl::table, TypeRule::Vector},
    {&types::NullPtrType::Impl::table, TypeRule::NullPtr},
    {&types::ErrorType::Impl::table, TypeRule::Error},
    {&types::AggregateType::Impl::table, TypeRule::Aggregate},
    {&types::ReferenceType::Impl::table, TypeRule::Reference},
    {&types::TyperefType::Impl::table, TypeRule::Transparent},
};

std::string_view widthWord(types::IntegerKind kind) noexcept {
    using types::IntegerKind;
    switch (kind) {
    case IntegerKind::SignedChar:
    case IntegerKind::UnsignedChar:
        return "char";
    case IntegerKind::SignedShort:
    case IntegerKind::UnsignedShort:
        return "short";
    case IntegerKind::SignedInt:
    case IntegerKind::UnsignedInt:
        return "int";
    case IntegerKind::SignedLong:
    case IntegerKind::UnsignedLong:
        return "long";
    case IntegerKind::SignedShortLong:
    case IntegerKind::UnsignedShortLong:
        return "short long";
    case IntegerKind::SignedLongLong:
    case IntegerKind::UnsignedLongLong:
        return "long long";
    default:
        return {};
    }
}

} // namespace

TypeRule ruleOf(brant::zero::schema::ClassTable const& table) noexcept {
    for (ClassRule const& entry : rules)
        if (entry.table == &table) return entry.rule;
    return TypeRule::Nothing;
}

void appendIntegerWords(std::string& out, types::IntegerKind kind, bool isSigned) {
    using types::IntegerKind;
    switch (kind) {
    case IntegerKind::Char:
        out += "char";
        return;
    case IntegerKind::Wchar:
        out += "wchar_t";
        return;
    case IntegerKind::Char16:
        out += "char16_t";
        return;
    case IntegerKind::Char32:
        out += "char32_t";
        return;
    case IntegerKind::SignedInt128:
        out += "__int128_t";
        return;
    case IntegerKind::UnsignedInt128:
        out += "__uint128_t";
        return;
    default:
        break;
    }
    if (!isSigned)
        out += "unsigned ";
    else if (kind == IntegerKind::SignedChar)
        out += "signed ";
    out += widthWord(kind);
}

void appendFloatWords(std::string& out, types::FloatKind kind) {
    using types::FloatKind;
    switch (kind) {
    case FloatKind::Half:
        out += "short float";
        break;
    case FloatKind::Single:
        out += "float";
        break;
    case FloatKind::Double:
        out += "double";
        break;
    case FloatKind::LongDouble:
        out += "long double";
        break;
    case FloatKind::Float80:
        out += "__float80";
        break;
    case FloatKind::Float128:
        out += "__float128";
        break;
    }
}

} // namespace zelkor::ast::names
