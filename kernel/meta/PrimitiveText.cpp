#include "brant/zero/meta/PrimitiveText.hpp"

#include <charconv>
#include <cmath>

namespace brant::zero::meta {

template <TextScalar T>
void appendText(std::string& out, T value) {
    if constexpr (std::same_as<T, bool>)
        out += value ? "true" : "false";
    else {
        char buffer[32]; // the longest form is a real's: 24 characters
        if constexpr (std::same_as<T, double>)
            if (std::isnan(value)) {
                out += "nan"; // a sign would not read back
                return;
            }
        out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
    }
}

template <TextScalar T>
std::errc parseText(std::string_view text, T& out) noexcept {
    if constexpr (std::same_as<T, bool>) {
        if (text != "true" && text != "false") return std::errc::invalid_argument;
        out = text == "true";
        return {};
    } else {
        T value{};
        auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error == std::errc::invalid_argument || end != text.data() + text.size())
            return std::errc::invalid_argument;
        if (error != std::errc()) return error;
        if constexpr (std::same_as<T, double>) {
            // The library also reads `INFINITY`, `nan(...)` and the like, which are nobody's text form.
            if (!std::isfinite(value) && text != "inf" && text != "-inf" && text != "nan")
                return std::errc::invalid_argument;
        }
        out = value;
        return {};
    }
}

#define BRANT0_INSTANTIATE(T)                                                                                \
    template void appendText<T>(std::string&, T);                                                            \
    template std::errc parseText<T>(std::string_view, T&) noexcept;
BRANT0_FOR_EACH_TEXT_SCALAR(BRANT0_INSTANTIATE)
#undef BRANT0_INSTANTIATE

} // namespace brant::zero::meta
