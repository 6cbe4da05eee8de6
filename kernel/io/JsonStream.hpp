// The stream under the JSON reader: a buffer, lines and columns, and what the reader itself does not do.
#pragma once

#include "ModelReader.hpp"
#include "TextSource.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace brant::zero::io {

/// Hands out one character after the other, a zero at the end.
///
/// Beyond that it checks the encoding, and puts the three bytes of a lone surrogate in place of its escape,
/// which the reader would refuse: raw text never has such bytes.
class JsonStream final : public Locator {
  public:
    using Ch = char;

    JsonStream(ModelReader& reader, TextSource& source);

    [[nodiscard]] char Peek() {
        if (at_ == end_) [[unlikely]]
            refill();
        return *at_;
    }
    char Take() {
        char const character = Peek();
        ++at_;
        return character;
    }
    [[nodiscard]] std::size_t Tell() const noexcept {
        return base_ + static_cast<std::size_t>(at_ - begin());
    }

    // Asked for by the reader's other modes, never called.
    char* PutBegin() noexcept { return nullptr; }
    void Put(char) noexcept {}
    void Flush() noexcept {}
    std::size_t PutEnd(char*) noexcept { return 0; }

    /// True once all text has been taken.
    [[nodiscard]] bool atEnd() { return Peek() == '\0' && at_ == end_; }
    [[nodiscard]] bool empty() const noexcept { return base_ == 0 && end_ == begin(); }
    void skipWhitespace();
    /// Copies characters that need no look up to a quote, an escape or a control character. `append` takes
    /// them.
    template <class Append>
    void copyPlain(Append append) {
        for (;;) {
            char const* const from = at_;
            at_ = const_cast<char*>(endOfPlain(at_));
            if (at_ != from) append(from, static_cast<std::size_t>(at_ - from));
            if (at_ != end_) return;
            refill();
            if (at_ == end_) return;
        }
    }
    Position position() override;
    /// \returns the place where the stream stands, not where the token began.
    [[nodiscard]] Position here();

  private:
    static constexpr std::size_t capacity = std::size_t{64} * 1024;
    static constexpr std::size_t slack = 16; ///< behind the end, for reading in strides

    [[nodiscard]] char* begin() const noexcept { return buffer_.get(); }
    [[nodiscard]] static char const* endOfPlain(char const* text) noexcept;
    void refill();
    /// \returns the size without a character at the end that is not whole yet.
    [[nodiscard]] std::size_t checkEncoding(std::size_t size);
    /// Works on the first `size` bytes. \returns how many of them were used and how many are left of these.
    [[nodiscard]] std::pair<std::size_t, std::size_t> replaceEscapes(std::size_t size);
    [[nodiscard]] Position locate(char const* place);

    ModelReader& reader_;
    TextSource& source_;
    std::unique_ptr<char[]> buffer_;
    char* at_;
    char* end_;
    char const* token_;    ///< where the present one begins, null when that was in an earlier buffer
    Position before_;      ///< where it was then
    std::string rest_;     ///< bytes that wait for their continuation
    std::size_t base_ = 0; ///< characters handed out before this buffer
    bool last_ = false;
    char const* counted_; ///< lines are counted up to here
    std::uint32_t line_ = 1;
    std::uint32_t column_ = 1; ///< of `counted_`
    std::size_t nextReplaced_ = 0;
    std::vector<char const*> replaced_; ///< behind which three bytes fewer stand than in the text
};

/// Found by the reader in place of its own.
inline void SkipWhitespace(JsonStream& stream) {
    stream.skipWhitespace();
}

} // namespace brant::zero::io
