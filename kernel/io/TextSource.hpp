// Where a reader's bytes come from: UTF-8 or bytes of an encoding that the text itself declares.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace brant::zero::io {

class TextSource {
  public:
    virtual ~TextSource() = default;
    /// \returns how many bytes were put to `to`, 0 at the end. \requires size >= 64.
    virtual std::size_t read(char* to, std::size_t size) = 0;
    /// True when the bytes are UTF-8 whatever the text says of itself.
    [[nodiscard]] virtual bool forcesUtf8() const noexcept { return false; }
};

std::unique_ptr<TextSource> makeTextSource(std::string const& text);
std::unique_ptr<TextSource> makeTextSource(std::u16string const& text);
/// \throws FileError when the file cannot be read, now or later.
std::unique_ptr<TextSource> openTextSource(std::string const& path);
/// Drops a byte order mark and makes UTF-8 of UTF-16 that starts with one. Lone surrogates become what
/// readers refuse.
std::unique_ptr<TextSource> decode(TextSource& source);

} // namespace brant::zero::io
