// What parsing alone costs, for setting an import beside it:
//   bench_parse [--macros] BUILD_DIR [JOBS]    parses all units of the compile database and drops them
//   bench_parse --list BUILD_DIR               tells the commands as the front end gets them, for other tools
// With --macros the front end also keeps its record of macros, which an import asks for. --list writes, for
// each unit, its directory, its main file, the number of its arguments and these, each followed by a zero
// byte.
#include "FrontEnd.hpp"
#include "UnitParser.hpp"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace {

namespace zp = zelkor::producer;

using Commands = std::vector<zp::CompileCommand>;

void list(Commands const& commands) {
    auto const put = [](std::string const& text) { std::cout << text << '\0'; };
    for (zp::CompileCommand const& command : commands) {
        std::vector<std::string> const arguments = zp::cleanArguments(command.arguments);
        put(command.directory);
        put(command.file);
        put(std::to_string(arguments.size()));
        for (std::string const& argument : arguments)
            put(argument);
    }
}

/// \returns how many units could not be parsed.
unsigned parseAll(Commands const& commands, unsigned options, unsigned jobs) {
    std::string const resources = zp::findResourceDirectory("");
    std::atomic<std::size_t> next{0};
    std::atomic<unsigned> failed{0};
    auto const work = [&] {
        for (std::size_t i = next++; i < commands.size(); i = next++) {
            zp::ClangIndex const index(clang_createIndex(0, 0));
            if (!zp::parseAlone(index.get(), commands[i], resources, options)) ++failed;
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < jobs; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    return failed;
}

int run(std::vector<std::string_view> words) {
    auto const take = [&words](std::string_view option) { return std::erase(words, option) > 0; };
    bool const wantsList = take("--list");
    bool const wantsMacros = take("--macros");
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
    bool isUsable = !words.empty() && words.size() <= 2;
    if (words.size() == 2) {
        auto const [end, error] = std::from_chars(words[1].data(), words[1].data() + words[1].size(), jobs);
        isUsable = error == std::errc() && end == words[1].data() + words[1].size() && jobs > 0;
    }
    if (!isUsable) throw std::invalid_argument("usage: bench_parse [--macros | --list] BUILD_DIR [JOBS]");
    Commands const commands = zp::readCompileDatabase(std::string(words[0]));
    if (wantsList) {
        list(commands);
        return std::cout.flush() ? 0 : 2;
    }
    unsigned options = CXTranslationUnit_KeepGoing;
    if (wantsMacros) options |= CXTranslationUnit_DetailedPreprocessingRecord;
    unsigned const failed = parseAll(commands, options, jobs);
    std::cout << commands.size() - failed << " of " << commands.size() << " units parsed\n";
    return failed == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (std::exception const& error) {
        std::cerr << "bench_parse: " << error.what() << '\n';
        return 2;
    }
}
