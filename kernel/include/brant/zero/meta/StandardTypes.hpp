/// \file
/// The primitive types that every schema can use.
#pragma once

#include "brant/zero/meta/PrimitiveType.hpp"
#include "brant/zero/meta/Type.hpp"

#include <atomic>
#include <string>

namespace brant::zero::meta {

namespace internal {

/// \returns the registered primitive. \throws NoSuchType when there is none of that name.
[[nodiscard]] ZELKOR_API PrimitiveType getPrimitiveTypeFromMetaRegistry(std::u16string const& name);

} // namespace internal

/// A primitive type that is looked up when it is first asked for; from then on a load of one pointer. Any
/// thread may ask: each would find the same object.
class ZELKOR_API StandardType {
  public:
    /// `name` outlives the object.
    constexpr explicit StandardType(char16_t const* name) noexcept : name_(name) {}
    StandardType(StandardType const&) = delete;
    StandardType& operator=(StandardType const&) = delete;

    /// \throws NoSuchType when the registry has no primitive of that name.
    [[nodiscard]] Type const& get() const {
        Type const* known = type_.load(std::memory_order_acquire);
        return known != nullptr ? *known : find();
    }
    operator Type const&() const { return get(); }

  private:
    [[nodiscard]] Type const& find() const;

    char16_t const* name_;
    mutable std::atomic<Type const*> type_{nullptr}; ///< never freed: primitives live as long as the process
};

/// The eight primitives.
struct ZELKOR_API StandardTypes {
    static StandardType const stringMeta;
    static StandardType const stdstringMeta;
    static StandardType const booleanMeta;
    static StandardType const integerMeta;
    static StandardType const integer64Meta;
    static StandardType const uinteger64Meta;
    static StandardType const unlimitedNaturalMeta;
    static StandardType const realMeta;

    /// \returns the primitive of that kind. \requires a kind of the eight.
    [[nodiscard]] static Type const& of(schema::ValueKind kind);

    // Each \throws NoSuchType when the registry does not have it.
    [[nodiscard]] static Type const& string() { return stringMeta.get(); }
    [[nodiscard]] static Type const& stdString() { return stdstringMeta.get(); }
    [[nodiscard]] static Type const& boolean() { return booleanMeta.get(); }
    [[nodiscard]] static Type const& integer() { return integerMeta.get(); }
    [[nodiscard]] static Type const& integer64() { return integer64Meta.get(); }
    [[nodiscard]] static Type const& uInteger64() { return uinteger64Meta.get(); }
    [[nodiscard]] static Type const& unlimitedNatural() { return unlimitedNaturalMeta.get(); }
    [[nodiscard]] static Type const& real() { return realMeta.get(); }
};

} // namespace brant::zero::meta
