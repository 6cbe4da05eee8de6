/// \file
/// How reflection calls an operation: one instance per operation, made from its member function.
#pragma once

#include "brant/zero/Value.hpp"
#include "brant/zero/meta/MetaRegistry.hpp"

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

namespace brant::zero::meta {

/// \returns the type that the schema gives for the result. \requires an assembled package.
[[nodiscard]] ZELKOR_API Type resultType(schema::OperationRow const& row);

/// Calls a `const` operation of `Body` that takes `Arguments`.
template <class Result, class Body, class... Arguments>
class ConstInvoker final : public AbstractInvoker {
  public:
    using Member = Result (Body::*)(Arguments...) const;

    ConstInvoker(schema::OperationRow const& row, Member member) noexcept : row_(row), member_(member) {}

    /// \requires as many arguments as the operation has, and an element of its class.
    /// \throws CannotCastIncompatibleTypes for an argument of the wrong type, before the operation is called.
    Value invoke(ModelElementImpl& element, std::vector<Value> const& arguments) const override {
        return call(static_cast<Body const&>(element), arguments, std::index_sequence_for<Arguments...>());
    }

  private:
    template <std::size_t... I>
    Value call(Body const& body, [[maybe_unused]] std::vector<Value> const& arguments,
               std::index_sequence<I...>) const {
        (arguments[I].template checkCompatible<std::decay_t<Arguments>>(), ...);
        return wrap((body.*member_)(arguments[I].template getValue<std::decay_t<Arguments>>()...));
    }

    Value wrap(Result result) const {
        Type const declared = resultType(row_);
        if constexpr (value::Container<Result>::value)
            return Value::ownContainer(declared, std::move(result));
        else if constexpr (value::Element<Result>)
            return Value::own<ModelElement>(result ? Type(result.getMetaClass()) : declared, ValueFlags::One,
                                            std::move(result));
        else
            return Value::own<Result>(declared, ValueFlags::One, std::move(result));
    }

    schema::OperationRow const& row_;
    Member member_;
};

/// \returns the invoker of the operation that `Rows[Index]` describes.
template <auto Member, auto const& Rows, std::size_t Index>
AbstractInvoker* invoker() {
    static ConstInvoker instance(Rows[Index], Member);
    return &instance;
}

} // namespace brant::zero::meta
