#include "Producer.hpp"

#include "Assembly.hpp"
#include "ParallelReader.hpp"
#include "Session.hpp"

#include <algorithm>
#include <cstdlib>

namespace zelkor::producer {

std::size_t ImportResult::countUnits(UnitState state) const {
    return static_cast<std::size_t>(std::count_if(
        units.begin(), units.end(), [state](UnitReport const& unit) { return unit.state == state; }));
}

std::string defaultCacheDirectory() {
    char const* const cache = std::getenv("XDG_CACHE_HOME");
    if (cache && *cache == '/')
        return std::string(cache) + "/zelkor/units"; // a relative one is to be ignored
    char const* const home = std::getenv("HOME");
    return home && *home == '/' ? std::string(home) + "/.cache/zelkor/units" : std::string();
}

ImportResult importProject(zelkor::ast::Ast& ast, ImportOptions const& options) {
    Assembly assembly(ast, options);
    Session session(options);
    std::size_t const total = session.commands().size();
    // Its threads may clean up while the model is filled.
    ParallelReader reader(
        total, [&session](std::size_t number, UnitSink const& sink) { session.read(number, sink); },
        threadCount(options.jobs, total));
    assembly.addAll(reader, total);
    ImportResult result = assembly.finish();
    result.root = session.paths().root();
    session.finish(result);
    return result;
}

} // namespace zelkor::producer
