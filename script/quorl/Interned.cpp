#include "quorl/Interned.hpp"

#include <memory>
#include <unordered_map>

namespace quorl {

namespace internal {

InternedName makeInterned(std::string_view text) {
    // Never destroyed: script objects may be released while the process winds down.
    static auto& names = *new std::unordered_map<std::string_view, std::unique_ptr<InternedEntry>>;
    if (text.empty()) return InternedName();
    if (auto const found = names.find(text); found != names.end()) return InternedName(found->second.get());
    auto entry = std::make_unique<InternedEntry>(InternedEntry{std::string(text), nullptr});
    InternedEntry* const made = entry.get();
    names.emplace(made->text, std::move(entry));
    return InternedName(made);
}

} // namespace internal

std::string const& InternedName::text() const noexcept {
    static std::string const& empty = *new std::string;
    return _entry == nullptr ? empty : _entry->text;
}

} // namespace quorl
