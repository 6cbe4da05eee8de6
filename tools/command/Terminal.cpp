#include "Terminal.hpp"

#include "Options.hpp"

#include <array>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace zelkor::command {

namespace {

bool colours = false;

bool isSet(char const* variable) {
    char const* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

bool byEnvironment() {
    if (isSet("NO_COLOR")) return false;
    if (isSet("CLICOLOR_FORCE") && std::string_view(std::getenv("CLICOLOR_FORCE")) != "0") return true;
    char const* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

} // namespace

void decideColours(std::string const& option) {
    if (option == "always")
        colours = true;
    else if (option == "never")
        colours = false;
    else if (option.empty() || option == "auto")
        colours = byEnvironment();
    else
        throw UsageError("--color takes auto, always or never, not '" + option + "'");
}

std::string painted(Paint paint, std::string const& text) {
    static constexpr std::array<char const*, 5> codes = {"\033[35m", "\033[36m", "\033[1m", "\033[33m",
                                                         "\033[1;4m"};
    if (!colours || text.empty()) return text;
    return codes[static_cast<std::size_t>(paint)] + text + "\033[0m";
}

} // namespace zelkor::command
