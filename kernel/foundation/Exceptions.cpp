#include "brant/zero/Exceptions.hpp"

#include "brant/zero/Text.hpp"

namespace tamber::core::except {

namespace {

struct AppendArgument {
    std::string& out;

    void operator()(long value) const { out += std::to_string(value); }
    void operator()(std::string const& text) const { out += text; }
    void operator()(std::u16string const& text) const { out += brant::zero::toUtf8(text); }
};

} // namespace

BaseMsgID::BaseMsgID(std::string_view catalog, std::string_view key, std::string_view text,
                     std::initializer_list<MessageArgument> arguments)
    : _arguments(arguments), _catalog(catalog), _key(key), _text(text) {}

std::string BaseMsgID::format() const {
    std::string result;
    for (std::size_t i = 0; i < _text.size(); ++i) {
        bool const placeholder = _text[i] == '{' && i + 2 < _text.size() && _text[i + 2] == '}';
        std::size_t const argument = placeholder ? std::size_t(_text[i + 1] - '0') : _arguments.size();
        if (argument < _arguments.size()) {
            std::visit(AppendArgument{result}, _arguments[argument]);
            i += 2;
        } else {
            result += _text[i];
        }
    }
    return result;
}

IUserException::~IUserException() = default;
IMsgIDException::~IMsgIDException() = default;

std::string IMsgIDException::get_error_id(BaseMsgID const& message) {
    std::string id(message.getCatalog());
    id += ':';
    id += message.getKey();
    return id;
}

} // namespace tamber::core::except

#define BRANT0_INSTANTIATE(Key, Text)                                                                        \
    template class tamber::core::except::Exception<brant0::messages::Key, std::exception, void>;
BRANT0_FOR_EACH_MESSAGE(BRANT0_INSTANTIATE)
#undef BRANT0_INSTANTIATE
#define ORVANE_INSTANTIATE(Key, Text)                                                                        \
    template class tamber::core::except::Exception<orvane::messages::Key, std::exception, void>;
ORVANE_FOR_EACH_CLASS_MESSAGE(ORVANE_INSTANTIATE)
#undef ORVANE_INSTANTIATE

namespace brant::zero {

template <class M>
void reportException(M const& message) {
    throw MessageException<M>(message);
}

#define BRANT0_INSTANTIATE(Key, Text) template void reportException(brant0::messages::Key const&);
BRANT0_FOR_EACH_MESSAGE(BRANT0_INSTANTIATE)
#undef BRANT0_INSTANTIATE
#define ORVANE_INSTANTIATE(Key, Text) template void reportException(orvane::messages::Key const&);
ORVANE_FOR_EACH_CLASS_MESSAGE(ORVANE_INSTANTIATE)
#undef ORVANE_INSTANTIATE

Error::Error(std::string_view id, std::string what) : _id(id), _what(std::move(what)) {}
Error::~Error() = default;

namespace {

std::string describe(HandleState state, std::string_view operation) {
    std::string text(operation);
    if (!text.empty()) text += ": ";
    switch (state) {
    case HandleState::Alive:
        return text + "the handle is alive";
    case HandleState::Null:
        return text + "the handle is null";
    case HandleState::Destroyed:
        return text + "the element of the handle was destroyed";
    case HandleState::RolledBack:
        return text + "the element of the handle went away with the transaction that created it";
    case HandleState::ModelGone:
        return text + "the model of the handle's element is gone";
    }
    return text + "the handle is in an unknown state";
}

} // namespace

DeadHandle::DeadHandle(HandleState state, std::string_view operation)
    : Error("brant0:DeadHandle", describe(state, operation)), _state(state) {}

std::unique_ptr<tamber::core::except::IUserException> DeadHandle::clone() const {
    return std::make_unique<DeadHandle>(*this);
}

void DeadHandle::rethrow() const {
    throw DeadHandle(*this);
}

void throwDeadHandle(HandleState state, std::string_view operation) {
    throw DeadHandle(state, operation);
}

namespace io {

namespace {

std::string describe(std::string const& file, std::size_t line, std::size_t column,
                     std::string const& message, std::string const& expected) {
    std::string text = file;
    for (std::size_t number : {line, column}) {
        if (number == 0) break;
        text += ':';
        text += std::to_string(number);
    }
    text += ": error: ";
    text += message;
    if (!expected.empty()) {
        text += "; expected ";
        text += expected;
    }
    return text;
}

std::string nameOf(std::string file) {
    return file.empty() ? std::string("<string>") : std::move(file);
}

} // namespace

ParseError::ParseError(std::string file, std::size_t line, std::size_t column, std::string message,
                       std::string expected)
    : ParseError(Named{nameOf(std::move(file))}, line, column, std::move(message), std::move(expected)) {}

ParseError::ParseError(Named file, std::size_t line, std::size_t column, std::string message,
                       std::string expected)
    : Error("brant0:io:ParseError", describe(file.name, line, column, message, expected)),
      _file(std::move(file.name)), _line(line), _column(column), _message(std::move(message)),
      _expected(std::move(expected)) {}

std::unique_ptr<tamber::core::except::IUserException> ParseError::clone() const {
    return std::make_unique<ParseError>(*this);
}

void ParseError::rethrow() const {
    throw ParseError(*this);
}

FileError::FileError(std::string path, std::string reason)
    : Error("brant0:io:FileError", path + ": error: " + reason), _path(std::move(path)),
      _reason(std::move(reason)) {}

std::unique_ptr<tamber::core::except::IUserException> FileError::clone() const {
    return std::make_unique<FileError>(*this);
}

void FileError::rethrow() const {
    throw FileError(*this);
}

} // namespace io
} // namespace brant::zero
