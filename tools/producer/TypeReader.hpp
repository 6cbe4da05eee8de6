// Types built from their structure, never from the front end's text; only dependent types come as text and
// nothing else.
#pragma once

#include "AliasIndex.hpp"
#include "Facts.hpp"

#include <cstdint>
#include <functional>
#include <string_view>
#include <utility>

namespace zelkor::producer {

class DeclarationReader;

class TypeReader {
  public:
    TypeReader(DeclarationReader& declarations, UnitFacts& facts);

    // Identity of a type; `context` is the declaration in which it is written and gives dependent types their
    // parameters. Nil for no type.
    Id read(CXType type, CXCursor context);
    // The type of a constructor or destructor, to which the front end gives a result that the language does
    // not.
    Id readWithoutResult(CXType type, CXCursor context);
    // The type of a pack's elements, as `T&&` for `T&&... t`.
    Id readPackPattern(CXType type, CXCursor context);
    // The type that a mangled name holds, made readable: a number, a named class or enumeration that the unit
    // has referred to, and pointers and the like to these; else an opaque type with the text.
    Id readMangled(std::string_view text, CXCursor context);

  private:
    Id build(CXType type, CXCursor context);
    Id buildUnqualified(CXType type, CXCursor context);
    Id buildDerived(CXType type, CXCursor context);
    Id buildArray(CXType type, CXCursor context);
    Id buildFunction(CXType type, CXCursor context, bool hasResult);
    Id buildUnexposed(CXType type, CXCursor context, std::string const& written);
    Id buildAlias(CXType type, CXCursor context, std::string const& written);
    Id buildOperator(CXType type, CXCursor context, std::string const& text);
    Id buildAttribute(Id base, std::string attribute);
    Id buildScalar(CXType type);
    struct ScalarRow;
    Id addScalar(ScalarRow const& row, unsigned bits);
    Id buildDerivedFrom(TypeKind kind, Id base);
    Id buildQualified(Id base, bool isConst, bool isVolatile, bool isRestrict);
    using Leaf = std::function<Id(std::string_view text)>;
    Id buildLayers(std::string_view text, Leaf const& leaf);
    Id scalarNamed(std::string_view words);
    Id opaque(std::string const& text, CXCursor context, bool isDependent);
    Id parameter(std::string const& canonicalText, CXCursor context);
    Id add(TypeFact&& fact, std::string const& key);

    // What the front end knows a type by; in a unit equal ones are the same type.
    using Address = std::pair<int, void const*>; // kind and pointer
    struct AddressHash {
        std::size_t operator()(Address const& address) const noexcept {
            auto const bits = reinterpret_cast<std::uintptr_t>(address.second) ^
                              std::uint64_t(static_cast<unsigned>(address.first)) << 48;
            return (bits * 0x9E3779B97F4A7C15U) >> 32;
        }
    };

    DeclarationReader& declarations_;
    UnitFacts& facts_;
    AliasIndex aliases_;
    IdSet known_;
    tsl::robin_map<Address, Id, AddressHash> memo_;
    // Counts what depends on the context, so that only the rest is remembered by the front end's own address.
    std::size_t contextUses_ = 0;
    unsigned depth_ = 0;
};

} // namespace zelkor::producer
