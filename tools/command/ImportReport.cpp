#include "ImportReport.hpp"

#include "Options.hpp"

#include <filesystem>
#include <iostream>
#include <string>

namespace zelkor::command {

namespace {

using producer::DiagnosticSeverity;
using producer::UnitReport;
using producer::UnitState;

char const* severityName(DiagnosticSeverity severity) {
    switch (severity) {
    case DiagnosticSeverity::Note:
        return "note";
    case DiagnosticSeverity::Warning:
        return "warning";
    default:
        return "error";
    }
}

void printDiagnostics(producer::ImportResult const& result, unsigned limit) {
    std::size_t printed = 0;
    std::size_t errors = 0;
    for (producer::ImportDiagnostic const& d : result.diagnostics) {
        if (d.severity < DiagnosticSeverity::Error) continue;
        ++errors;
        if (limit != 0 && printed >= limit) continue;
        ++printed;
        if (!d.file.empty()) std::cerr << d.file << ':' << d.line << ':' << d.column << ": ";
        std::cerr << severityName(d.severity) << ": " << d.text << '\n';
    }
    if (errors > printed)
        std::cerr << "zelkor: " << errors - printed << " more errors; --error-limit 0 shows all\n";
}

std::string unitCount(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " unit" : " units");
}

void printUnits(producer::ImportResult const& result) {
    for (UnitReport const& unit : result.units) {
        if (unit.state == UnitState::Complete) continue;
        std::cerr << "zelkor: " << (unit.state == UnitState::Failed ? "failed" : "incomplete") << ": "
                  << unit.file << ": " << unit.reason;
        if (!unit.advice.empty()) std::cerr << "; " << unit.advice;
        std::cerr << '\n';
    }
}

void printCauses(producer::ImportResult const& result) {
    for (auto const& [header, units] : result.missingHeaders)
        std::cerr << "zelkor: header not found: " << header << " (" << unitCount(units)
                  << "); install or generate it, or name its folder with --extra-arg=-IDIR\n";
    for (auto const& [option, units] : result.rejectedOptions)
        std::cerr << "zelkor: note: compiler option " << option
                  << " is not one of the front end's and was left out of " << unitCount(units) << '\n';
    if (!result.leftOut.empty())
        std::cerr << "zelkor: note: " << result.leftOut.size()
                  << " commands that compile neither C nor C++ were left out, such as that of "
                  << result.leftOut.front() << '\n';
    for (std::string const& warning : result.warnings)
        std::cerr << "zelkor: warning: " << warning << '\n';
}

void printDetails(producer::ImportResult const& result) {
    for (producer::VariantReport const& variant : result.variants)
        std::cerr << variant.dropped << ": note: " << variant.name << " has " << variant.reason
                  << " than in the model, where it is that of " << variant.kept << '\n';
    for (std::string const& note : result.notes)
        std::cerr << "zelkor: note: " << note << '\n';
}

} // namespace

void printReport(producer::ImportResult const& result, char const* done, ReportOptions const& options) {
    printDiagnostics(result, options.errorLimit);
    if (options.isVerbose) printDetails(result);
    printUnits(result);
    printCauses(result);
    if (options.isQuiet) return;
    std::size_t const failed = result.countUnits(UnitState::Failed);
    std::cerr << done << ' ' << result.units.size() - failed << " of " << unitCount(result.units.size());
    if (result.unchangedUnits != 0) std::cerr << " (" << result.unchangedUnits << " unchanged)";
    std::cerr << ", " << result.countUnits(UnitState::Incomplete) << " incomplete, " << failed << " failed";
    if (!result.variants.empty())
        std::cerr << ", " << result.variants.size()
                  << (result.variants.size() == 1 ? " definition differs" : " definitions differ")
                  << " between units" << (options.isVerbose ? "" : " (-v tells where)");
    std::cerr << '\n';
}

void printRoot(producer::ImportResult const& result) {
    std::error_code error;
    if (result.root.empty() || std::filesystem::equivalent(result.root, ".", error)) return;
    std::cerr << "zelkor: note: paths in the model begin at " << result.root
              << "; import --root DIR changes that\n";
}

int exitCodeOf(producer::ImportResult const& result, bool failOnError) {
    bool const isWhole = result.countUnits(UnitState::Complete) == result.units.size();
    return failOnError && !isWhole ? UnitsFailed : Ok;
}

} // namespace zelkor::command
