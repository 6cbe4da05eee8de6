#pragma once

#include <string>
#include <string_view>

#include "brant/zero/Export.hpp"

namespace quorl {

class QuorlClass;
class InternedName;

namespace internal {

struct InternedEntry {
    std::string text;
    QuorlClass* loadedClass = nullptr; ///< set once the class is loaded: finding a class by name is one load
};

/// \returns the one name with this text. The text is kept until the process ends. O(length).
ZELKOR_API InternedName makeInterned(std::string_view text);

} // namespace internal

/// A class name that is compared and hashed by address. Copying is free.
class ZELKOR_API InternedName {
  public:
    InternedName() = default; ///< the empty name

    std::string const& text() const noexcept;
    bool isEmpty() const noexcept { return _entry == nullptr; }
    internal::InternedEntry* entry() const noexcept { return _entry; }
    friend bool operator==(InternedName, InternedName) = default;

  private:
    friend InternedName internal::makeInterned(std::string_view);
    explicit InternedName(internal::InternedEntry* entry) : _entry(entry) {}

    internal::InternedEntry* _entry = nullptr;
};

} // namespace quorl
