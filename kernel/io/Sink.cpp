#include "Sink.hpp"

#include "brant/zero/Text.hpp"
#include "brant/zero/io/Serializer.hpp"

namespace brant::zero::io {

namespace {

class Utf8Sink final : public Sink {
  public:
    explicit Utf8Sink(std::string& text) noexcept : text_(text) {}
    void write(char const* bytes, std::size_t size) override { text_.append(bytes, size); }

  private:
    std::string& text_;
};

/// Widens what is written, keeping back a character whose rest comes with the next piece.
class Utf16Sink final : public Sink {
  public:
    explicit Utf16Sink(std::u16string& text) noexcept : text_(text) {}
    void write(char const* bytes, std::size_t size) override {
        rest_.append(bytes, size);
        std::size_t whole = rest_.size();
        std::size_t const lookBack = whole < 3 ? 0 : whole - 3;
        for (std::size_t i = whole; i > lookBack; --i) {
            auto const byte = static_cast<unsigned char>(rest_[i - 1]);
            if (byte < 0x80) break;
            if (byte >= 0xC0) {
                std::size_t const length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
                if (i - 1 + length > rest_.size()) whole = i - 1;
                break;
            }
        }
        static_cast<void>(appendUtf16(text_, std::string_view(rest_).substr(0, whole)));
        rest_.erase(0, whole);
    }
    [[nodiscard]] std::string_view encoding() const noexcept override { return "UTF-16"; }

  private:
    std::u16string& text_;
    std::string rest_;
};

} // namespace

std::unique_ptr<Sink> makeStringSink(std::string& text) {
    return std::make_unique<Utf8Sink>(text);
}
std::unique_ptr<Sink> makeStringSink(std::u16string& text) {
    return std::make_unique<Utf16Sink>(text);
}

SerializationOutput::SerializationOutput(std::unique_ptr<Sink> sink) noexcept : sink_(std::move(sink)) {}
SerializationOutput::SerializationOutput(SerializationOutput&&) noexcept = default;
SerializationOutput& SerializationOutput::operator=(SerializationOutput&&) noexcept = default;
SerializationOutput::~SerializationOutput() = default;

SerializationOutput SerializationOutput::forFile(std::u16string const& path, log::Span const&) {
    return SerializationOutput(makeFileSink(path));
}
SerializationOutput SerializationOutput::forUTF8String(std::string& text) {
    return SerializationOutput(makeStringSink(text));
}
SerializationOutput SerializationOutput::forUTF16String(std::u16string& text) {
    return SerializationOutput(makeStringSink(text));
}

} // namespace brant::zero::io
