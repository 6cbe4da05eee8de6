#include "ImportReport.hpp"
#include "Producer.hpp"
#include "Progress.hpp"
#include "Verbs.hpp"

#include <atomic>
#include <csignal>
#include <iostream>
#include <limits>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace zelkor::command {

namespace {

std::atomic<bool> interrupted{false};

void onInterrupt(int) {
    interrupted.store(true);
}

/// The first signal lets the import end in good order, a second one ends the program at once.
void watchInterrupts() {
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (int const signal : {SIGINT, SIGTERM})
        sigaction(signal, &action, nullptr);
}

int reportInterrupt() {
    std::cerr << "zelkor: interrupted; nothing was written\n";
    return Interrupted;
}

producer::ImportOptions importOptions(Arguments const& arguments, Progress& progress) {
    producer::ImportOptions options;
    options.database = arguments.value("--project");
    options.root = arguments.value("--root");
    options.extraArguments = arguments.values("--extra-arg");
    options.jobs = arguments.number("--jobs", 0);
    if (arguments.has("--no-insight") && arguments.has("--transitive"))
        throw UsageError("--transitive is about insight; leave out --no-insight");
    if (arguments.has("--no-insight")) options.insight = producer::Insight::None;
    if (arguments.has("--transitive")) options.insight = producer::Insight::Transitive;
    if (!arguments.has("--no-cache"))
        options.cacheDirectory = arguments.value("--cache", producer::defaultCacheDirectory());
    options.needsCache = arguments.has("--cache");
    options.cancelled = &interrupted;
    options.progress = [&progress](producer::ImportProgress const& now) {
        progress.show(now.unitsDone, now.unitsTotal, now.file);
    };
    return options;
}

ReportOptions reportOptions(Arguments const& arguments) {
    return {arguments.number("--error-limit", 20), arguments.has("--verbose"), arguments.has("--quiet")};
}

std::string requireOutput(Arguments const& arguments) {
    if (!arguments.has("--output")) throw UsageError("missing option: -o FILE, or -o - for standard output");
    return arguments.value("--output");
}

/// Has the C library keep the memory that is freed, and take more in large pieces. By default each thread's
/// heap grows page by page, every page by a call of the system. Before any thread.
void takeMemoryInLargePieces() {
#ifdef __GLIBC__
    constexpr int piece = 64 << 20; // address space; pages that nothing was put into take no memory
    mallopt(M_TOP_PAD, piece);
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_MMAP_THRESHOLD, piece / 2); // the most that is allowed
#endif
}

/// What an import makes. It is never destroyed: the command ends when it is written, and the system takes
/// back memory at once that would be freed in a million pieces here. As it stays reachable, checkers see no
/// leak.
struct Import {
    zelkor::ast::Ast ast;
    producer::ImportResult result;

    static Import& only() {
        static Import* const made = new Import;
        return *made;
    }
};

/// Runs `fill`, which gives an ImportResult, on a new model, and writes that.
template <class Fill>
int writeImport(Arguments const& arguments, char const* done, Fill fill) {
    std::string const out = requireOutput(arguments);
    if (out.ends_with(".zku"))
        throw UsageError(out +
                         ": a unit file is of one unit; give --unit SOURCE, or name a model .json or .xml");
    auto const format = formatOf(out, arguments.value("--format"));
    requireWritable(out); // before the work, which may take long
    ReportOptions const report = reportOptions(arguments);
    Progress progress(arguments.value("--progress"), report.isQuiet);
    watchInterrupts();
    takeMemoryInLargePieces();
    auto& [ast, result] = Import::only();
    result = fill(ast, importOptions(arguments, progress));
    progress.clear();
    if (result.isCancelled) return reportInterrupt();
    writeModel(ast, out, format);
    printReport(result, done, report);
    if (!report.isQuiet) printRoot(result);
    // A model of nothing is no success, whoever goes on with it.
    if (result.countUnits(producer::UnitState::Failed) == result.units.size()) return UnitsFailed;
    return exitCodeOf(result, arguments.has("--fail-on-error"));
}

int importOneUnit(Arguments const& arguments) {
    producer::UnitOptions unit;
    unit.file = arguments.value("--unit");
    unit.output = requireOutput(arguments);
    unit.dependencyFile = arguments.value("--depfile");
    if (unit.output == "-")
        throw UsageError("a unit file cannot go to standard output; give -o a file or a folder");
    if (arguments.has("--format"))
        throw UsageError("--format is for models; a unit file has a form of its own");
    if (arguments.has("--project"))
        arguments.requireOperands({});
    else
        unit.arguments = arguments.operands();
    ReportOptions const report = reportOptions(arguments);
    Progress progress("never", true);
    watchInterrupts();
    producer::ImportResult const result = producer::importUnit(importOptions(arguments, progress), unit);
    if (result.isCancelled) return reportInterrupt();
    printReport(result, "imported", report);
    return exitCodeOf(result, arguments.has("--fail-on-error"));
}

int printUnitList(Arguments const& arguments) {
    Progress progress("never", true);
    std::string text;
    for (std::string const& file : producer::listUnits(importOptions(arguments, progress)))
        text += file + '\n';
    print(text);
    return Ok;
}

} // namespace

int runImport(Arguments const& arguments) {
    if (arguments.has("--unit")) return importOneUnit(arguments);
    arguments.requireOperands({});
    if (!arguments.has("--project"))
        throw UsageError("missing option: -p BUILD_DIR, the folder with compile_commands.json");
    if (arguments.has("--list-units")) return printUnitList(arguments);
    if (arguments.has("--depfile")) throw UsageError("--depfile goes with --unit");
    return writeImport(arguments, "imported", producer::importProject);
}

int runMerge(Arguments const& arguments) {
    if (arguments.operands().empty())
        throw UsageError(
            "missing argument: UNIT, a file that zelkor import --unit wrote, or a folder of them");
    return writeImport(arguments, "merged",
                       [&](zelkor::ast::Ast& ast, producer::ImportOptions const& options) {
                           return producer::mergeUnits(ast, arguments.operands(), options);
                       });
}

} // namespace zelkor::command
