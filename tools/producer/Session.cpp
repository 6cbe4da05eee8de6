#include "Session.hpp"

#include <algorithm>
#include <thread>

namespace zelkor::producer {

unsigned threadCount(unsigned jobs, std::size_t units) {
    unsigned const wanted = jobs == 0 ? std::max(1U, std::thread::hardware_concurrency()) : jobs;
    return static_cast<unsigned>(std::min<std::size_t>(wanted, units));
}

Session::Session(ImportOptions const& options) : Session(options, readCompileDatabase(options.database)) {}

Session::Session(ImportOptions const& options, std::vector<CompileCommand> commands)
    : commands_(std::move(commands)), settings_{findResourceDirectory(options.resourceDirectory),
                                                options.extraArguments, options.insight != Insight::None},
      paths_(options.root.empty() ? commonDirectory(commands_) : options.root) {
    for (CompileCommand const& foreign : takeForeignCommands(commands_))
        leftOut_.push_back(unitPath(foreign, paths_));
    if (commands_.empty()) throw ImportError(options.database + ": names no unit of C or C++");
    if (!options.cacheDirectory.empty()) openCache(options);
}

void Session::openCache(ImportOptions const& options) {
    try {
        cache_.emplace(options.cacheDirectory);
    } catch (ImportError const& error) {
        if (options.needsCache) throw;
        warnings_.emplace_back(error.what());
    }
}

void Session::read(std::size_t number, UnitSink const& sink) {
    CompileCommand const& command = commands_[number];
    if (!cache_) return parseUnit(command, settings_, paths_, sink);
    Digest const digest = commandDigest(command, settings_, paths_);
    if (std::optional<UnitFacts> known = cache_->find(digest)) return sink.unit(*std::move(known));
    auto const keep = [&](UnitFacts&& facts) {
        cache_->store(digest, paths_.root(), facts);
        sink.unit(std::move(facts));
    };
    parseUnit(command, settings_, paths_, {keep, sink.files});
}

UnitHead Session::head(std::size_t number, UnitFacts const& facts) const {
    return {paths_.root(), facts.file, commandDigest(commands_[number], settings_, paths_),
            settings_.wantsUses, facts.inputs};
}

void Session::finish(ImportResult& result) {
    result.leftOut = leftOut_;
    result.warnings.insert(result.warnings.end(), warnings_.begin(), warnings_.end());
    if (!cache_) return;
    cache_->prune();
    result.unchangedUnits = cache_->hits();
    result.notes = cache_->takeNotes();
}

} // namespace zelkor::producer
