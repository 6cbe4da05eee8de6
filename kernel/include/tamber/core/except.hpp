#pragma once

#include <exception>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "brant/zero/Export.hpp"

namespace tamber::core::except {

using std::bad_alloc;

using MessageArgument = std::variant<long, std::string, std::u16string>;

inline MessageArgument toArgument(long value) {
    return value;
}
inline MessageArgument toArgument(std::string_view text) {
    return std::string(text);
}
inline MessageArgument toArgument(std::u16string_view text) {
    return std::u16string(text);
}

/// A failure as data: the catalog and the key that name it, and the arguments of its text. Catalog, key and
/// text are literals that outlive the program.
class ZELKOR_API BaseMsgID {
  public:
    std::string_view getCatalog() const noexcept { return _catalog; }
    std::string_view getKey() const noexcept { return _key; }
    std::vector<MessageArgument> const& getArguments() const noexcept { return _arguments; }

    /// The English sentence as UTF-8, with the arguments put in.
    std::string format() const;

  protected:
    BaseMsgID(std::string_view catalog, std::string_view key, std::string_view text,
              std::initializer_list<MessageArgument> arguments);
    BaseMsgID(BaseMsgID const&) = default;
    BaseMsgID& operator=(BaseMsgID const&) = default;
    ~BaseMsgID() = default;

  private:
    std::vector<MessageArgument> _arguments;
    std::string_view _catalog;
    std::string_view _key;
    std::string_view _text;
};

/// How many arguments a message text asks for: one more than the highest "{n}" in it.
constexpr std::size_t countPlaceholders(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t i = 0; i + 2 < text.size(); ++i)
        if (text[i] == '{' && text[i + 1] >= '0' && text[i + 1] <= '9' && text[i + 2] == '}' &&
            count <= std::size_t(text[i + 1] - '0'))
            count = std::size_t(text[i + 1] - '0') + 1;
    return count;
}

/// What the message classes share. `Derived` names itself by the literals `catalog`, `key` and `text`, and
/// is constructed from as many arguments as its text has placeholders: numbers, UTF-8 or UTF-16 texts.
template <class Derived>
class Message : public BaseMsgID {
  public:
    template <class... Arguments>
    explicit Message(Arguments const&... arguments)
        : BaseMsgID(Derived::catalog, Derived::key, Derived::text, {toArgument(arguments)...}) {
        static_assert(sizeof...(Arguments) == countPlaceholders(Derived::text),
                      "the arguments do not match the placeholders of the message text");
    }
};

/// Every failure that this system reports on purpose.
class ZELKOR_API IUserException {
  public:
    virtual ~IUserException();

    /// The whole message as UTF-8.
    virtual char const* what() const noexcept = 0;

    /// The stable name of the kind of failure, such as "brant0:messages:NoSuchType".
    virtual std::string const& GetID() const noexcept = 0;

    virtual std::unique_ptr<IUserException> clone() const = 0;

    /// Throws a copy of this exception with its own type.
    [[noreturn]] virtual void rethrow() const = 0;

  protected:
    IUserException() = default;
    IUserException(IUserException const&) = default;
    IUserException& operator=(IUserException const&) = default;
};

/// A failure that carries a message object.
class ZELKOR_API IMsgIDException : public IUserException {
  public:
    ~IMsgIDException() override;

    virtual BaseMsgID const& GetBaseMsgIDObj() const noexcept = 0;

    /// Catalog and key joined by a colon.
    static std::string get_error_id(BaseMsgID const& message);

  protected:
    IMsgIDException() = default;
    IMsgIDException(IMsgIDException const&) = default;
    IMsgIDException& operator=(IMsgIDException const&) = default;
};

/// The exception that carries a message `M`. The third parameter leaves room for a payload.
template <class M, class Base, class Payload>
class ZELKOR_API Exception final : public Base, public IMsgIDException {
  public:
    explicit Exception(M const& message)
        : _message(message), _id(get_error_id(message)), _what(_id + ": " + message.format()) {}

    char const* what() const noexcept override { return _what.c_str(); }
    std::string const& GetID() const noexcept override { return _id; }
    M const& GetBaseMsgIDObj() const noexcept override { return _message; }
    std::unique_ptr<IUserException> clone() const override { return std::make_unique<Exception>(*this); }
    [[noreturn]] void rethrow() const override { throw Exception(*this); }

  private:
    M _message;
    std::string _id;
    std::string _what;
};

} // namespace tamber::core::except
