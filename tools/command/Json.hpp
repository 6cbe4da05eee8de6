// JSON as the verbs write it, on one line for each record.
#pragma once

#include <cstddef>
#include <string>

namespace zelkor::command {

/// Text as a JSON string with its quotes. A byte that is no UTF-8 becomes the escape of U+DC00 plus the byte.
[[nodiscard]] std::string jsonText(std::string const& text);

/// Members of an object, in the order in which they are added.
class JsonMembers {
  public:
    JsonMembers() = default;
    /// `separator` stands between two members, its comma included.
    explicit JsonMembers(char const* separator) : separator_(separator) {}

    JsonMembers& text(char const* name, std::string const& value) { return raw(name, jsonText(value)); }
    JsonMembers& number(char const* name, std::size_t value) { return raw(name, std::to_string(value)); }
    JsonMembers& flag(char const* name, bool value) { return raw(name, value ? "true" : "false"); }
    /// `value` is JSON itself.
    JsonMembers& raw(char const* name, std::string const& value);
    JsonMembers& append(JsonMembers const& more);

    /// \returns `"a": 1, "b": 2` without braces.
    [[nodiscard]] std::string const& str() const noexcept { return members_; }
    [[nodiscard]] bool empty() const noexcept { return members_.empty(); }

  private:
    char const* separator_ = ", ";
    std::string members_;
};

} // namespace zelkor::command
