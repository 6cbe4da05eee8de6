#pragma once

#include "brant/zero/Exceptions.hpp"

/// The host's own messages; the kernel's and the model's cross the host unchanged.
#define QUORL_FOR_EACH_MESSAGE(X)                                                                            \
    X(NoSuchClass, "There is no class '{0}'; load the library that brings its package first.")               \
    X(NoSuchMember, "The class '{0}' has no member '{1}'.")                                                  \
    X(NoSuchField, "The struct has no field '{0}'.")                                                         \
    X(DuplicateName, "'{0}' has a '{1}' already.")                                                           \
    X(BadClass, "The class '{0}' cannot be used: {1}.")                                                      \
    X(BadPackage, "The package '{0}' cannot be registered: {1}.")                                            \
    X(BadSignature, "The signature of '{0}' is wrong: {1}.")                                                 \
    X(WrongType, "{0}: a value of type '{1}' is needed, not one of type '{2}'.")                             \
    X(WrongArgumentCount, "{0} cannot be called with {1} inputs; it takes {2}.")                             \
    X(NoMatchingOverload, "No form of '{0}' takes inputs of these types: {1}.")                              \
    X(IndexOutOfRange, "There is no element {0} in an array of {1}; elements count from 0.")                 \
    X(CannotInstantiate, "An object of '{0}' cannot be made this way: {1}.")

namespace orvane::messages {
#define QUORL_DECLARE(Key, Text)                                                                             \
    class ZELKOR_API Key final : public tamber::core::except::Message<Key> {                                 \
      public:                                                                                                \
        static constexpr char catalog[] = "Orvane:class";                                                    \
        static constexpr char key[] = #Key;                                                                  \
        static constexpr char text[] = Text;                                                                 \
        using Message::Message;                                                                              \
    };
QUORL_FOR_EACH_MESSAGE(QUORL_DECLARE)
#undef QUORL_DECLARE
} // namespace orvane::messages

namespace orvane_detail {

/// The one way by which a failure leaves a script call: throws a copy of `error` with its own type.
[[noreturn]] ZELKOR_API void do_legacy_error(tamber::core::except::IUserException const& error);

} // namespace orvane_detail

namespace quorl {

namespace messages = orvane::messages;

/// What a script sees of a failure.
struct ErrorReport {
    std::string catalog; ///< such as "brant0:messages"
    std::string id;      ///< such as "InvalidValue"
    std::string text;    ///< the whole sentence in UTF-8, with catalog and id in front where the kind has it
    std::vector<tamber::core::except::MessageArgument>
        arguments; ///< empty for failures without a message object
};

ZELKOR_API ErrorReport describe(tamber::core::except::IUserException const& error);

template <class M, class... Arguments>
[[noreturn]] void raise(Arguments const&... arguments) {
    orvane_detail::do_legacy_error(brant::zero::MessageException<M>(M(arguments...)));
}

} // namespace quorl
