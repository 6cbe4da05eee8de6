#include "Progress.hpp"

#include "Options.hpp"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string_view>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

namespace zelkor::command {

namespace {

constexpr std::chrono::milliseconds redrawInterval{100};

bool isSet(char const* variable) {
    char const* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool canRedraw() {
    char const* const terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && !(terminal && std::string_view(terminal) == "dumb");
}

std::size_t terminalWidth() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::string timeText(double seconds) {
    auto const whole = static_cast<unsigned long>(seconds + 0.5);
    if (whole < 60) return std::to_string(whole) + " s";
    std::string const minutes = std::to_string(whole / 60 % 60);
    if (whole < 3600) return minutes + " min";
    return std::to_string(whole / 3600) + " h " + minutes + " min";
}

/// As much of the text as has room, without cutting a character in two.
std::string cut(std::string text, std::size_t width) {
    if (text.size() <= width) return text;
    while (width > 0 && (static_cast<unsigned char>(text[width]) & 0xC0) == 0x80)
        --width;
    text.resize(width);
    return text;
}

} // namespace

std::string progressText(std::size_t done, std::size_t total, double seconds) {
    std::string text = std::to_string(done) + '/' + std::to_string(total) + " units";
    if (done == 0 || seconds < 0.5) return text;
    double const rate = static_cast<double>(done) / seconds;
    char digits[32];
    std::snprintf(digits, sizeof digits, rate < 10 ? ", %.1f/s" : ", %.0f/s", rate);
    text += digits;
    if (done < total) text += ", " + timeText(static_cast<double>(total - done) / rate) + " left";
    return text;
}

Progress::Progress(std::string const& mode, bool quiet) {
    if (!mode.empty() && mode != "auto" && mode != "always" && mode != "never")
        throw UsageError("unknown mode of progress '" + mode + "'; use auto, always or never");
    if (quiet || mode == "never") return;
    if (canRedraw())
        form_ = Form::Line;
    else if (mode == "always" || isSet("CI"))
        form_ = Form::Tenths;
}

void Progress::show(std::size_t done, std::size_t total, std::string const& what) {
    if (form_ == Form::Nothing || total == 0) return;
    auto const now = Clock::now();
    std::string text = progressText(done, total, std::chrono::duration<double>(now - started_).count());
    if (form_ == Form::Tenths) {
        if (std::size_t const tenths = done * 10 / total; tenths > std::exchange(tenths_, tenths))
            std::cerr << text << '\n';
        return;
    }
    if (done != total && now - last_ < redrawInterval) return;
    last_ = now;
    text += done == total ? "  filling the model" : "  " + what;
    std::cerr << "\r\033[K" << cut(std::move(text), terminalWidth() - 1) << std::flush;
    drawn_ = true;
}

void Progress::clear() {
    if (std::exchange(drawn_, false)) std::cerr << "\r\033[K" << std::flush;
}

} // namespace zelkor::command
