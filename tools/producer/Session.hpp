// What an import works on: the commands, and how each of them becomes facts.
#pragma once

#include "CompileDatabase.hpp"
#include "Producer.hpp"
#include "UnitCache.hpp"
#include "UnitParser.hpp"

#include <optional>
#include <string>
#include <vector>

namespace zelkor::producer {

class Session {
  public:
    // Of the database that the options name. Throws ImportError.
    explicit Session(ImportOptions const& options);
    // Of commands that come from elsewhere; the options name the root.
    Session(ImportOptions const& options, std::vector<CompileCommand> commands);

    std::vector<CompileCommand> const& commands() const { return commands_; }
    // Main files of the database's commands that compile neither C nor C++, as they are in the model.
    std::vector<std::string> const& leftOut() const { return leftOut_; }
    ProjectPaths const& paths() const { return paths_; }

    // From the cache or by the front end; as `parseUnit` gives it. May be called by threads.
    void read(std::size_t number, UnitSink const& sink);
    UnitHead head(std::size_t number, UnitFacts const& facts) const;
    // To be called once, after the last unit.
    void finish(ImportResult& result);

  private:
    void openCache(ImportOptions const& options);

    std::vector<CompileCommand> commands_;
    std::vector<std::string> leftOut_;
    std::vector<std::string> warnings_;
    ParserSettings settings_;
    ProjectPaths paths_;
    std::optional<UnitCache> cache_;
};

// How many threads read this many units; 0 jobs: one for each processor.
unsigned threadCount(unsigned jobs, std::size_t units);

} // namespace zelkor::producer
