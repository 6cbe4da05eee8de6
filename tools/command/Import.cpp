#include "Producer.hpp"
#include "Verbs.hpp"

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <unistd.h>

namespace zelkor::command {

namespace {

std::atomic<bool> interrupted{false};

void onInterrupt(int) {
    interrupted.store(true);
}

/// One line on a terminal, redrawn at most ten times a second; nothing elsewhere.
class ProgressLine {
  public:
    explicit ProgressLine(bool wanted) : shown_(wanted && isatty(STDERR_FILENO) == 1) {}
    ~ProgressLine() { clear(); }

    void show(producer::ImportProgress const& progress) {
        auto const now = std::chrono::steady_clock::now();
        if (!shown_ ||
            (progress.unitsDone != progress.unitsTotal && now - last_ < std::chrono::milliseconds(100)))
            return;
        last_ = now;
        std::cerr << "\r\033[K[" << progress.unitsDone << '/' << progress.unitsTotal << "] " << progress.file
                  << std::flush;
        drawn_ = true;
    }
    void clear() {
        if (std::exchange(drawn_, false)) std::cerr << "\r\033[K" << std::flush;
    }

  private:
    bool shown_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point last_{};
};

char const* severityName(producer::DiagnosticSeverity severity) {
    switch (severity) {
    case producer::DiagnosticSeverity::Note:
        return "note";
    case producer::DiagnosticSeverity::Warning:
        return "warning";
    default:
        return "error";
    }
}

void reportDiagnostics(producer::ImportResult const& result, unsigned limit) {
    std::size_t printed = 0;
    std::size_t errors = 0;
    for (producer::ImportDiagnostic const& d : result.diagnostics) {
        if (d.severity < producer::DiagnosticSeverity::Error) continue;
        ++errors;
        if (limit != 0 && printed >= limit) continue;
        ++printed;
        if (!d.file.empty()) std::cerr << d.file << ':' << d.line << ':' << d.column << ": ";
        std::cerr << severityName(d.severity) << ": " << d.text << '\n';
    }
    if (errors > printed)
        std::cerr << "zelkor: " << errors - printed << " more errors; --error-limit 0 shows all\n";
    for (auto const& [option, units] : result.rejectedOptions)
        std::cerr << "zelkor: note: compiler option " << option
                  << " is unknown to the front end and was left out of " << units << " units\n";
}

int summarise(producer::ImportResult const& result, bool quiet, bool failOnError) {
    std::size_t const failed = result.countUnits(producer::UnitState::Failed);
    std::size_t const incomplete = result.countUnits(producer::UnitState::Incomplete);
    for (producer::UnitReport const& unit : result.units)
        if (unit.state != producer::UnitState::Complete)
            std::cerr << "zelkor: " << (unit.state == producer::UnitState::Failed ? "failed" : "incomplete")
                      << ": " << unit.file << ": " << unit.reason << '\n';
    if (!quiet)
        std::cerr << "imported " << result.units.size() - failed << " of " << result.units.size()
                  << " units, " << incomplete << " incomplete, " << failed << " failed"
                  << (result.variants.empty() ? ""
                                              : ", " + std::to_string(result.variants.size()) +
                                                    " definitions differ between units")
                  << '\n';
    return failOnError && failed + incomplete > 0 ? UnitsFailed : Ok;
}

} // namespace

int runImport(Arguments const& arguments) {
    arguments.requireOperands({});
    if (!arguments.has("--project"))
        throw UsageError("missing option: -p BUILD_DIR, the folder with compile_commands.json");
    if (!arguments.has("--output")) throw UsageError("missing option: -o FILE, or -o - for standard output");
    std::string const out = arguments.value("--output");
    auto const format = formatOf(out, arguments.value("--format"));
    bool const quiet = arguments.has("--quiet");

    std::signal(SIGINT, onInterrupt);
    ProgressLine line(!quiet);
    producer::ImportOptions options;
    options.database = arguments.value("--project");
    options.root = arguments.value("--root");
    options.extraArguments = arguments.values("--extra-arg");
    options.jobs = arguments.number("--jobs", 0);
    if (arguments.has("--no-insight") && arguments.has("--transitive"))
        throw UsageError("--transitive is about insight; leave out --no-insight");
    if (arguments.has("--no-insight")) options.insight = producer::Insight::None;
    if (arguments.has("--transitive")) options.insight = producer::Insight::Transitive;
    options.cancelled = &interrupted;
    options.progress = [&line](producer::ImportProgress const& progress) { line.show(progress); };

    zelkor::ast::Ast ast;
    producer::ImportResult const result = producer::importProject(ast, options);
    line.clear();
    if (result.isCancelled) {
        std::cerr << "zelkor: interrupted; nothing was written\n";
        return Interrupted;
    }
    reportDiagnostics(result, arguments.number("--error-limit", 20));
    writeModel(ast, out, format);
    return summarise(result, quiet, arguments.has("--fail-on-error"));
}

} // namespace zelkor::command
