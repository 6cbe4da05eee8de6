// How far an import is, on standard error: one line that is redrawn on a terminal, a line for each tenth
// elsewhere.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace zelkor::command {

class Progress {
  public:
    /// \param mode auto, always or never. Auto shows something on a terminal, and where the environment says
    /// that this is continuous integration. \throws UsageError for another word.
    Progress(std::string const& mode, bool quiet);
    ~Progress() { clear(); }
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    void show(std::size_t done, std::size_t total, std::string const& what);
    /// Removes the line, so that other text can be written.
    void clear();

  private:
    enum class Form { Nothing, Line, Tenths };
    using Clock = std::chrono::steady_clock;

    Form form_ = Form::Nothing;
    bool drawn_ = false;
    std::size_t tenths_ = 0;
    Clock::time_point started_ = Clock::now();
    Clock::time_point last_{};
};

/// \returns "12/40 units, 3.2/s, 9 s left" after `seconds`; the rate and what is left once they can be told.
[[nodiscard]] std::string progressText(std::size_t done, std::size_t total, double seconds);

} // namespace zelkor::command
