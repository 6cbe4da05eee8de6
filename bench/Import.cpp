// What an import costs beside parsing the same units with the front end alone, on as many threads:
//   bench_import BUILD_DIR [ROUNDS [JOBS]]
// takes a compile database, such as one of scripts/corpus.sh.
#include "Clang.hpp"
#include "CompileDatabase.hpp"
#include "Producer.hpp"
#include "UnitParser.hpp"

#include <zelkor/ast.hpp>
#include <zelkor/ast/io.hpp>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
namespace za = zelkor::ast;
namespace zp = zelkor::producer;

/// Processor time of all threads, which another program on the machine changes least.
double seconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class Folder {
  public:
    Folder() {
        std::string pattern = (fs::temp_directory_path() / "zelkor-bench-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;

    fs::path const& path() const { return path_; }

  private:
    fs::path path_;
};

void parseUnit(zp::CompileCommand const& command, std::string const& resources) {
    std::vector<std::string> arguments = zp::cleanArguments(command.arguments);
    arguments.insert(arguments.begin() + 1,
                     {"-resource-dir", resources, "-working-directory", command.directory});
    std::vector<char const*> words;
    for (std::string const& argument : arguments)
        words.push_back(argument.c_str());
    zp::ClangIndex const index(clang_createIndex(0, 0));
    CXTranslationUnit handle = nullptr;
    clang_parseTranslationUnit2FullArgv(index.get(), nullptr, words.data(), static_cast<int>(words.size()),
                                        nullptr, 0, CXTranslationUnit_KeepGoing, &handle);
    if (handle == nullptr) throw std::runtime_error(command.file + ": cannot be parsed");
    zp::ClangUnit const unit(handle);
}

class Bench {
  public:
    Bench(std::string const& database, unsigned jobs)
        : commands_(zp::readCompileDatabase(database)), resources_(zp::findResourceDirectory({})) {
        zp::takeForeignCommands(commands_);
        options_.database = database;
        options_.jobs = jobs;
        for (std::string const& unit : zp::listUnits(options_))
            zp::importUnit(options_, {unit, {}, units_.path().string(), {}});
        expected_ = text([this](za::Ast& ast) { zp::importProject(ast, options_); });
    }

    void parse() {
        std::atomic<std::size_t> next{0};
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < options_.jobs; ++i) {
            threads.emplace_back([&] {
                for (std::size_t number = next++; number < commands_.size(); number = next++)
                    parseUnit(commands_[number], resources_);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    /// Each takes a new model.
    void import(za::Ast& ast) { zp::importProject(ast, options_); }
    void importIntoCache(za::Ast& ast) {
        fs::remove_all(cache_.path());
        importFromCache(ast);
    }
    void importFromCache(za::Ast& ast) {
        zp::ImportOptions options = options_;
        options.cacheDirectory = cache_.path().string();
        zp::importProject(ast, options);
    }
    void merge(za::Ast& ast) { zp::mergeUnits(ast, {units_.path().string()}, options_); }

    /// \returns seconds; checks that the model is the right one.
    double time(std::function<void(za::Ast&)> const& fill) {
        double taken = 0;
        std::string const got = text([&](za::Ast& ast) {
            double const begin = seconds();
            fill(ast);
            taken = seconds() - begin;
        });
        if (got != expected_) throw std::runtime_error("the model is another one");
        return taken;
    }

    std::uintmax_t cacheSize() const {
        std::uintmax_t size = 0;
        for (fs::directory_entry const& entry : fs::recursive_directory_iterator(cache_.path()))
            size += entry.is_regular_file() ? entry.file_size() : 0;
        return size;
    }
    std::size_t modelSize() const { return expected_.size(); }
    std::size_t units() const { return commands_.size(); }

  private:
    static std::string text(std::function<void(za::Ast&)> const& fill) {
        za::Ast ast;
        fill(ast);
        return za::io::serializeToUTF8String(ast, za::io::IoFormat::json);
    }

    std::vector<zp::CompileCommand> commands_;
    std::string resources_;
    zp::ImportOptions options_;
    Folder cache_;
    Folder units_;
    std::string expected_;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

int run(std::string const& database, int rounds, unsigned jobs) {
    Bench bench(database, jobs);
    struct Row {
        char const* name;
        void (Bench::*fill)(za::Ast&);
        std::vector<double> times, ratios;
    };
    Row rows[] = {{"import, no cache", &Bench::import, {}, {}},
                  {"import, cold cache", &Bench::importIntoCache, {}, {}},
                  {"import, warm cache", &Bench::importFromCache, {}, {}},
                  {"merge of unit files", &Bench::merge, {}, {}}};
    std::vector<double> parsed;
    for (int round = 0; round < rounds; ++round) {
        double const begin = seconds();
        bench.parse();
        parsed.push_back(seconds() - begin);
        for (Row& row : rows) {
            row.times.push_back(bench.time([&](za::Ast& ast) { (bench.*row.fill)(ast); }));
            row.ratios.push_back(row.times.back() / parsed.back());
        }
    }
    std::cout << std::fixed << std::setprecision(2) << bench.units() << " units, " << jobs << " threads, "
              << rounds << " rounds; parsing alone: " << median(parsed) << " s of processor time\n";
    for (Row const& row : rows)
        std::cout << std::setw(20) << std::left << row.name << ' ' << median(row.times) << " s, ratio "
                  << median(row.ratios) << '\n';
    std::cout << "cache " << bench.cacheSize() << " bytes, model " << bench.modelSize() << " bytes of JSON\n";
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::cerr << "usage: bench_import BUILD_DIR [ROUNDS [JOBS]]\n";
        return 2;
    }
    try {
        return run(arguments[1], count > 2 ? std::max(1, std::atoi(arguments[2])) : 5,
                   count > 3 ? static_cast<unsigned>(std::max(1, std::atoi(arguments[3]))) : 2);
    } catch (std::exception const& error) {
        std::cerr << "bench_import: " << error.what() << '\n';
        return 1;
    }
}
