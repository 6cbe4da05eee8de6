#include "Producer.hpp"

#include "CompileDatabase.hpp"
#include "Emitter.hpp"
#include "UnitParser.hpp"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace zelkor::producer {

namespace {

// Units are parsed in any order and handed out in the order of the database.
class ParallelParser {
  public:
    ParallelParser(std::vector<CompileCommand> const& commands, ParserSettings const& settings,
                   ProjectPaths const& paths, unsigned jobs)
        : commands_(commands), settings_(settings), paths_(paths), results_(commands.size()),
          window_(std::size_t{jobs} * 4) {
        for (unsigned i = 0; i < jobs; ++i)
            threads_.emplace_back([this] { work(); });
    }
    ~ParallelParser() {
        stop();
        for (std::thread& thread : threads_)
            thread.join();
    }
    ParallelParser(ParallelParser const&) = delete;
    ParallelParser& operator=(ParallelParser const&) = delete;

    void stop() {
        std::lock_guard const lock(mutex_);
        isStopped_ = true;
        room_.notify_all();
    }

    // Waits for the unit; each may be taken once, in ascending order.
    UnitFacts take(std::size_t number) {
        std::unique_lock lock(mutex_);
        ready_.wait(lock, [&] { return results_[number].has_value() || failure_; });
        if (failure_) std::rethrow_exception(failure_);
        UnitFacts facts = *std::move(results_[number]);
        results_[number].reset();
        taken_ = number + 1;
        room_.notify_all();
        return facts;
    }

  private:
    // The number of the next unit to parse, or nothing; waits while the units that nobody took are too many.
    std::optional<std::size_t> next() {
        std::unique_lock lock(mutex_);
        room_.wait(lock,
                   [&] { return isStopped_ || started_ >= commands_.size() || started_ < taken_ + window_; });
        if (isStopped_ || started_ >= commands_.size()) return std::nullopt;
        return started_++;
    }

    void work() {
        try {
            while (std::optional<std::size_t> const number = next()) {
                UnitFacts facts = parseUnit(commands_[*number], settings_, paths_);
                std::lock_guard const lock(mutex_);
                results_[*number] = std::move(facts);
                ready_.notify_all();
            }
        } catch (...) {
            std::lock_guard const lock(mutex_);
            failure_ = std::current_exception();
            isStopped_ = true;
            ready_.notify_all();
            room_.notify_all();
        }
    }

    std::vector<CompileCommand> const& commands_;
    ParserSettings const& settings_;
    ProjectPaths const& paths_;
    std::mutex mutex_;
    std::condition_variable ready_;
    std::condition_variable room_;
    std::vector<std::optional<UnitFacts>> results_;
    std::size_t window_;
    std::size_t started_ = 0;
    std::size_t taken_ = 0;
    bool isStopped_ = false;
    std::exception_ptr failure_;
    std::vector<std::thread> threads_; // last, so that all else is there when they start
};

DiagnosticSeverity toPublic(Severity severity) {
    return static_cast<DiagnosticSeverity>(static_cast<int>(severity));
}

std::string placeText(Diagnostic const& diagnostic) {
    if (diagnostic.file.empty()) return diagnostic.text;
    return diagnostic.file + ':' + std::to_string(diagnostic.line) + ':' + std::to_string(diagnostic.column) +
           ": " + diagnostic.text;
}

void report(UnitFacts const& facts, ImportResult& result) {
    UnitReport unit;
    unit.file = facts.file;
    if (!facts.failure.empty()) {
        unit.state = UnitState::Failed;
        unit.reason = facts.failure;
    }
    for (Diagnostic const& diagnostic : facts.diagnostics) {
        if (diagnostic.severity >= Severity::Error && unit.state == UnitState::Complete) {
            unit.state = UnitState::Incomplete;
            unit.reason = placeText(diagnostic);
        }
        result.diagnostics.push_back({diagnostic.file, diagnostic.line, diagnostic.column,
                                      toPublic(diagnostic.severity), diagnostic.text});
    }
    for (std::string const& option : facts.rejectedOptions)
        ++result.rejectedOptions[option];
    result.units.push_back(std::move(unit));
}

std::string placeText(ProjectFacts const& facts, Position const& position) {
    FileFact const* const file = facts.file(position.file);
    return (file ? file->path : std::string("?")) + ':' + std::to_string(position.line) + ':' +
           std::to_string(position.column);
}

void reportVariants(ProjectFacts const& facts, ImportResult& result) {
    for (Variant const& variant : facts.variants()) {
        result.variants.push_back({variant.name, placeText(facts, variant.kept),
                                   placeText(facts, variant.dropped), variant.reason});
    }
    if (facts.hasMixedTargets()) {
        result.diagnostics.push_back(
            {"", 0, 0, DiagnosticSeverity::Warning,
             "the units are for different targets; the sizes are those of the first unit"});
    }
}

unsigned threadCount(unsigned jobs, std::size_t units) {
    unsigned const wanted = jobs == 0 ? std::max(1U, std::thread::hardware_concurrency()) : jobs;
    return static_cast<unsigned>(std::min<std::size_t>(wanted, units));
}

} // namespace

std::size_t ImportResult::countUnits(UnitState state) const {
    return static_cast<std::size_t>(std::count_if(
        units.begin(), units.end(), [state](UnitReport const& unit) { return unit.state == state; }));
}

ImportResult importProject(zelkor::ast::Ast& ast, ImportOptions const& options) {
    if (ast.getModel().size() != 0) throw ImportError("the model is not empty; import into a new one");
    std::vector<CompileCommand> const commands = readCompileDatabase(options.database);
    ParserSettings const settings{findResourceDirectory(options.resourceDirectory), options.extraArguments,
                                  options.insight != Insight::None};
    ProjectPaths const paths(options.root.empty() ? commonDirectory(commands) : options.root);
    auto const isCancelled = [&] { return options.cancelled && options.cancelled->load(); };
    ImportResult result;
    result.root = paths.root();
    ProjectFacts facts;
    {
        ParallelParser parser(commands, settings, paths, threadCount(options.jobs, commands.size()));
        for (std::size_t i = 0; i < commands.size() && !isCancelled(); ++i) {
            UnitFacts unit = parser.take(i);
            report(unit, result);
            facts.add(std::move(unit));
            if (options.progress) options.progress({i + 1, commands.size(), result.units.back().file});
        }
    }
    result.isCancelled = isCancelled();
    if (result.isCancelled) return result;
    reportVariants(facts, result);
    brant::zero::Transaction transaction = ast.getModel().beginTransaction();
    Emitter emitter(ast, facts);
    emitter.emit(options.insight);
    transaction.commit();
    result.created = emitter.created();
    return result;
}

} // namespace zelkor::producer
