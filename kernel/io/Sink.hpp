// Where bytes of a text go, and the buffer in front of it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace brant::zero::io {

class Sink {
  public:
    virtual ~Sink() = default;
    /// Called once, before the first byte.
    virtual void begin() {}
    virtual void write(char const* bytes, std::size_t size) = 0;
    /// Called once, after the last byte: makes the text take its place. Without it nothing may stay.
    virtual void finish() {}
    /// The encoding that an XML declaration names.
    [[nodiscard]] virtual std::string_view encoding() const noexcept { return "UTF-8"; }
};

std::unique_ptr<Sink> makeStringSink(std::string& text);
std::unique_ptr<Sink> makeStringSink(std::u16string& text);
std::unique_ptr<Sink> makeFileSink(std::u16string const& path);

/// Collects small pieces. Pieces are put where `room` says, then announced by `advance`.
class TextBuffer {
  public:
    static constexpr std::size_t capacity = std::size_t{64} * 1024;

    explicit TextBuffer(Sink& sink) : sink_(sink), buffer_(new char[capacity]), at_(buffer_.get()) {}

    /// \returns a place for `size` bytes. \requires size <= capacity.
    [[nodiscard]] char* room(std::size_t size) {
        if (static_cast<std::size_t>(buffer_.get() + capacity - at_) < size) [[unlikely]]
            flush();
        return at_;
    }
    void advance(char* end) noexcept { at_ = end; }
    void put(char byte) {
        *room(1) = byte;
        ++at_;
    }
    void put(std::string_view text) {
        if (text.size() > capacity / 2) [[unlikely]]
            return putLong(text);
        at_ = std::copy(text.begin(), text.end(), room(text.size())); // an empty one may have no data to copy
    }
    void flush() {
        sink_.write(buffer_.get(), static_cast<std::size_t>(at_ - buffer_.get()));
        at_ = buffer_.get();
    }

  private:
    void putLong(std::string_view text) {
        flush();
        sink_.write(text.data(), text.size());
    }

    Sink& sink_;
    std::unique_ptr<char[]> buffer_;
    char* at_;
};

} // namespace brant::zero::io
