#pragma once

#include <cstdint>

#include "brant/zero/Messages.hpp"

namespace brant::zero {

/// The exception that `reportException` throws for a message `M`.
template <class M>
using MessageException = tamber::core::except::Exception<M, std::exception, void>;

template <class M>
[[noreturn]] ZELKOR_API void reportException(M const& message);

/// What the exceptions without a catalog message have in common: a kind, a text, and that they can be
/// copied through their interface.
class ZELKOR_API Error : public std::exception, public tamber::core::except::IUserException {
  public:
    ~Error() override;
    char const* what() const noexcept override { return _what.c_str(); }
    std::string const& GetID() const noexcept override { return _id; }

  protected:
    Error(std::string_view id, std::string what);
    Error(Error const&) = default;
    Error& operator=(Error const&) = default;

  private:
    std::string _id;
    std::string _what;
};

enum class HandleState : std::uint8_t {
    Alive,
    Null,       ///< The handle refers to nothing.
    Destroyed,  ///< Its element was destroyed.
    RolledBack, ///< The transaction that created its element was abandoned.
    ModelGone,  ///< The model that its element belonged to has ended.
};

/// A handle without a living element was used.
class ZELKOR_API DeadHandle final : public Error {
  public:
    /// `operation` says what was asked of the handle, such as "Function.getName"; it may be empty.
    explicit DeadHandle(HandleState state, std::string_view operation = {});

    HandleState getState() const noexcept { return _state; }
    std::unique_ptr<tamber::core::except::IUserException> clone() const override;
    [[noreturn]] void rethrow() const override;

  private:
    HandleState _state;
};

/// The one throw that accessors share, out of line so that they stay small.
[[noreturn]] ZELKOR_API void throwDeadHandle(HandleState state, std::string_view operation = {});

namespace io {

/// A text could not be read. what() is "file:line:column: error: message", followed by what was expected
/// instead where that is known.
class ZELKOR_API ParseError final : public Error {
  public:
    /// `file` is a path in UTF-8, or empty for a text in memory, which is shown as "<string>". Line and
    /// column count from 1, the column in bytes of the UTF-8 text; 0 stands for unknown and is left out.
    ParseError(std::string file, std::size_t line, std::size_t column, std::string message,
               std::string expected = {});

    std::string const& getFile() const noexcept { return _file; }
    std::size_t getLine() const noexcept { return _line; }
    std::size_t getColumn() const noexcept { return _column; }
    std::string const& getMessage() const noexcept { return _message; }
    std::string const& getExpected() const noexcept { return _expected; }
    std::unique_ptr<tamber::core::except::IUserException> clone() const override;
    [[noreturn]] void rethrow() const override;

  private:
    struct Named {
        std::string name;
    };
    ParseError(Named file, std::size_t line, std::size_t column, std::string message, std::string expected);

    std::string _file;
    std::size_t _line;
    std::size_t _column;
    std::string _message;
    std::string _expected;
};

/// A file could not be opened, read, written or replaced.
class ZELKOR_API FileError final : public Error {
  public:
    /// `path` in UTF-8; `reason` in words, such as the system's text for an errno.
    FileError(std::string path, std::string reason);

    std::string const& getPath() const noexcept { return _path; }
    std::string const& getReason() const noexcept { return _reason; }
    std::unique_ptr<tamber::core::except::IUserException> clone() const override;
    [[noreturn]] void rethrow() const override;

  private:
    std::string _path;
    std::string _reason;
};

} // namespace io

#define BRANT0_EXTERN(Key, Text) extern template void reportException(brant0::messages::Key const&);
BRANT0_FOR_EACH_MESSAGE(BRANT0_EXTERN)
#undef BRANT0_EXTERN
#define ORVANE_EXTERN(Key, Text) extern template void reportException(orvane::messages::Key const&);
ORVANE_FOR_EACH_CLASS_MESSAGE(ORVANE_EXTERN)
#undef ORVANE_EXTERN

} // namespace brant::zero

// The exceptions' tables and type information are in the library once, so that they are caught across its
// border.
#define BRANT0_EXTERN(Key, Text)                                                                             \
    extern template class tamber::core::except::Exception<brant0::messages::Key, std::exception, void>;
BRANT0_FOR_EACH_MESSAGE(BRANT0_EXTERN)
#undef BRANT0_EXTERN
#define ORVANE_EXTERN(Key, Text)                                                                             \
    extern template class tamber::core::except::Exception<orvane::messages::Key, std::exception, void>;
ORVANE_FOR_EACH_CLASS_MESSAGE(ORVANE_EXTERN)
#undef ORVANE_EXTERN
