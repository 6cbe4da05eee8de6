// Runs the contenders, each workload in a process of its own, rounds interleaved, and prints the ratios.
#include "Contenders.hpp"
#include "FloorWrite.hpp"
#include "LeanXml.hpp"
#include "Marks.hpp"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <tuple>
#include <unistd.h>

namespace zelkor::bench {

namespace {

#ifdef ZELKOR_BENCH_OURS
constexpr std::string_view defaultSubject = "ours";
#else
constexpr std::string_view defaultSubject = "tracked";
#endif

struct Options {
    unsigned elements = 1'000'000;
    unsigned rounds = 9;
    unsigned changes = 0; // a tenth of the elements
    std::uint64_t seed = 1;
    std::string only;
    std::string subject{defaultSubject};
    bool json = false;
    bool all = false;
};

constexpr char usage[] =
    "usage: bench_run [options]\n"
    "  --elements N   size of the model (1000000)\n"
    "  --rounds N     rounds; the median of their ratios is printed (9)\n"
    "  --changes N    changes in the transaction workloads (a tenth of the elements)\n"
    "  --seed N       seed of the model (1)\n"
    "  --only TEXT    only rows with TEXT in the workload's or the peer's name\n"
    "  --subject NAME the contender set against the peers (ours where it is built, else tracked)\n"
    "  --all          also run every workload that no row asks for\n"
    "  --json         print JSON in place of the table\n";

template <class Number>
void readNumber(std::string_view name, std::string_view text, Number& into) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), into);
    if (error != std::errc() || end != text.data() + text.size() || into == 0)
        throw std::invalid_argument(std::string(name) + " wants a number above 0, not '" + std::string(text) +
                                    "'");
}

Options readOptions(std::vector<std::string_view> const& words) {
    Options options;
    for (std::size_t at = 0; at < words.size(); ++at) {
        std::string_view const word = words[at];
        if (word == "--json" || word == "--all") {
            (word == "--json" ? options.json : options.all) = true;
            continue;
        }
        if (at + 1 == words.size())
            throw std::invalid_argument("unknown option or value missing: " + std::string(word));
        std::string_view const value = words[++at];
        if (word == "--elements")
            readNumber(word, value, options.elements);
        else if (word == "--rounds")
            readNumber(word, value, options.rounds);
        else if (word == "--changes")
            readNumber(word, value, options.changes);
        else if (word == "--seed")
            readNumber(word, value, options.seed);
        else if (word == "--only")
            options.only = value;
        else if (word == "--subject")
            options.subject = value;
        else
            throw std::invalid_argument("unknown option: " + std::string(word));
    }
    return options;
}

/// A folder for the documents, gone at the end.
class Folder {
  public:
    Folder() {
        std::string name = (std::filesystem::temp_directory_path() / "zelkor-bench-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::runtime_error("cannot make a folder like " + name);
        path = name;
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;
    ~Folder() {
        std::error_code ignored; // nothing is lost when a temporary file stays
        std::filesystem::remove_all(path, ignored);
    }
    std::string path;
};

/// The documents that loads and parses read, written from the floor in a process of its own: what this one
/// frees would be heap that all children inherit.
void writeDocuments(Stage& stage) {
    floor::Model<false> model;
    floor::Builder<false> builder(model, stage.plan.seed());
    stage.plan.replay(builder);
    std::string json;
    floor::JsonWriter<false>(json).write(*model.project);
    std::string xml;
    floor::XmlWriter<false>(xml).write(*model.project);
    stage.expect((std::ofstream(stage.jsonPath(), std::ios::binary) << json << std::flush) &&
                     (std::ofstream(stage.xmlPath(), std::ios::binary) << xml << std::flush),
                 "cannot write the documents into " + stage.settings.folder);
}

void prepareDocuments(Plan const& plan, Settings& settings) {
    Sample const written = runApart({"documents", writeDocuments}, plan, settings, Heap::Cold);
    if (written.failure[0]) throw std::runtime_error(written.failure);
    settings.json = Fingerprint::ofFile(settings.folder + "/model.json");
    settings.xml = Fingerprint::ofFile(settings.folder + "/model.xml");
}

std::vector<Contender> allContenders() {
    std::vector<Contender> all{countedContender(),   trackedContender(),  pugixmlContender(),
                               rapidJsonContender(), nlohmannContender(), protobufContender(),
                               libxml2Contender(),   sqliteContender()};
#ifdef ZELKOR_BENCH_OURS
    all.push_back(oursContender());
#endif
    return all;
}

class Bench {
  public:
    Bench(Options const& options_, Plan const& plan_, Settings const& settings_)
        : options(options_), plan(plan_), settings(settings_), contenders(allContenders()) {
        if (!contender(options.subject)) throw std::invalid_argument("no contender " + options.subject);
        for (Mark const& mark : marks) {
            std::string_view const peer = peerOf(mark);
            if (!named(mark) || !offers(options.subject, mark.workload) || !offers(peer, mark.peerWorkload))
                continue;
            if (peer == options.subject && mark.peerWorkload == mark.workload) continue;
            rows.push_back(mark);
            ask({options.subject, mark.workload, mark.heap});
            ask({peer, mark.peerWorkload, mark.heap});
        }
        if (options.all) askRest();
    }

    void run() {
        for (unsigned round = 0; round < options.rounds; ++round) {
            for (Key const& key : keys) {
                auto const& [name, workload, heap] = key;
                Contender const& runner = *contender(name);
                Sample const sample = runApart(*runner.find(workload), plan, settings, heap, runner.warm);
                if (sample.failure[0]) failures.push_back(describe(key) + ": " + sample.failure);
                samples[key].push_back(sample);
            }
        }
    }

    /// Whether every contender's checks held.
    bool sound() const { return failures.empty(); }

    void printTable() const {
        std::printf(
            "%u elements, JSON %.1f MB, XML %.1f MB, %u rounds; ns (or bytes, as told) an element\n\n",
            plan.elements(), megabytes("model.json"), megabytes("model.xml"), options.rounds);
        std::printf("%-22s| %9s | %-24s| %9s | %7s | %8s | %s\n", "workload", options.subject.c_str(), "peer",
                    "peer's", "ratio", "mark (a)", "verdict");
        for (Mark const& mark : rows) {
            Result const result = resultOf(mark);
            std::string const limit = mark.atMost ? format("<= %.2f", *mark.atMost) : "-";
            std::string const peer =
                std::string(peerOf(mark)) +
                (mark.peerWorkload == mark.workload ? "" : " " + std::string(mark.peerWorkload));
            std::printf("%-22s| %9.1f | %-24s| %9.1f | %7.2f | %8s | %s%s%.*s\n", labelOf(mark).c_str(),
                        result.subject, peer.c_str(), result.peer, result.ratio, limit.c_str(),
                        verdict(mark, result).c_str(), mark.note.empty() ? "" : "  # ",
                        static_cast<int>(mark.note.size()), mark.note.data());
        }
        std::printf("\nall medians:\n");
        for (auto const& [key, taken] : samples) {
            double const value = median(valuesOf(taken));
            std::uint64_t const size = taken.front().documentSize;
            std::printf("%-36s %9.1f", describe(key).c_str(), value);
            if (size && isDocument(key)) {
                double const seconds = value * 1e-9 * static_cast<double>(plan.elements());
                double const megabytes = static_cast<double>(size) / 1e6;
                std::printf("  %.1f MB, %.0f MB/s", megabytes, megabytes / seconds);
            }
            std::printf("\n");
        }
        for (std::string const& failure : failures)
            std::fprintf(stderr, "failed: %s\n", failure.c_str());
    }

    void printJson() const {
        nlohmann::ordered_json out;
        out["elements"] = plan.elements();
        out["seed"] = options.seed;
        out["rounds"] = options.rounds;
        out["jsonBytes"] = documentSize("model.json");
        out["xmlBytes"] = documentSize("model.xml");
        out["rows"] = nlohmann::ordered_json::array();
        for (Mark const& mark : rows) {
            Result const result = resultOf(mark);
            nlohmann::ordered_json row{
                {"workload", mark.workload},  {"heap", mark.heap == Heap::Cold ? "cold" : "warm"},
                {"subject", options.subject}, {"subjectValue", result.subject},
                {"peer", peerOf(mark)},       {"peerWorkload", mark.peerWorkload},
                {"peerValue", result.peer},   {"ratio", result.ratio}};
            if (mark.atMost) {
                row["mark"] = *mark.atMost;
                row["met"] = result.ratio <= *mark.atMost;
            }
            out["rows"].push_back(std::move(row));
        }
        out["samples"] = nlohmann::ordered_json::object();
        for (auto const& [key, taken] : samples)
            out["samples"][describe(key)] = valuesOf(taken);
        out["failures"] = failures;
        std::printf("%s\n", out.dump(1).c_str());
    }

  private:
    using Key = std::tuple<std::string_view, std::string_view, Heap>;
    struct Result {
        double subject;
        double peer;
        double ratio;
    };

    std::uintmax_t documentSize(char const* leaf) const {
        return std::filesystem::file_size(settings.folder + "/" + leaf);
    }
    double megabytes(char const* leaf) const { return static_cast<double>(documentSize(leaf)) / 1e6; }

    Contender const* contender(std::string_view name) const {
        auto const found = std::find_if(contenders.begin(), contenders.end(),
                                        [name](Contender const& each) { return each.name == name; });
        return found == contenders.end() ? nullptr : &*found;
    }
    bool offers(std::string_view name, std::string_view workload) const {
        Contender const* const found = contender(name);
        return found && found->find(workload);
    }
    bool named(Mark const& mark) const {
        return labelOf(mark).find(options.only) != std::string::npos ||
               mark.peer.find(options.only) != std::string_view::npos;
    }
    std::string_view peerOf(Mark const& mark) const {
        return mark.peer.empty() ? std::string_view(options.subject) : mark.peer;
    }
    static std::string labelOf(Mark const& mark) {
        return std::string(mark.workload) +
               (bytesMeasured(mark.workload) || mark.heap == Heap::Warm ? "" : " cold");
    }
    static bool bytesMeasured(std::string_view workload) {
        return workload.ends_with("memory") || workload.ends_with("peak");
    }
    static bool bytesMeasured(Key const& key) { return bytesMeasured(std::get<1>(key)); }
    static bool isDocument(Key const& key) {
        std::string_view const workload = std::get<1>(key);
        return workload.find('.') != std::string_view::npos && !bytesMeasured(workload);
    }
    static std::string describe(Key const& key) {
        auto const& [name, workload, heap] = key;
        return std::string(name) + " " + std::string(workload) +
               (heap == Heap::Cold && !bytesMeasured(key) ? " cold" : "");
    }

    void ask(Key const& key) {
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) keys.push_back(key);
    }
    void askRest() {
        for (Contender const& each : contenders)
            for (Workload const& workload : each.workloads)
                ask({each.name, workload.name, bytesMeasured(workload.name) ? Heap::Cold : Heap::Warm});
    }

    static std::vector<double> valuesOf(std::vector<Sample> const& taken) {
        std::vector<double> values;
        for (Sample const& sample : taken)
            values.push_back(sample.value);
        return values;
    }
    static double median(std::vector<double> values) {
        std::sort(values.begin(), values.end());
        std::size_t const half = values.size() / 2;
        return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
    }
    Result resultOf(Mark const& mark) const {
        std::vector<double> const subject = valuesOf(samples.at({options.subject, mark.workload, mark.heap}));
        std::vector<double> const peer = valuesOf(samples.at({peerOf(mark), mark.peerWorkload, mark.heap}));
        std::vector<double> ratios;
        for (std::size_t round = 0; round < subject.size(); ++round)
            ratios.push_back(subject[round] / peer[round]);
        return {median(subject), median(peer), median(ratios)};
    }
    std::string verdict(Mark const& mark, Result const& result) const {
        if (!mark.atMost) return "";
        return result.ratio <= *mark.atMost ? "met" : "MISSED";
    }
    static std::string format(char const* form, double value) {
        char text[32];
        std::snprintf(text, sizeof text, form, value);
        return text;
    }

    Options const& options;
    Plan const& plan;
    Settings const& settings;
    std::vector<Contender> contenders;
    std::vector<Mark> rows;
    std::vector<Key> keys;
    std::map<Key, std::vector<Sample>> samples;
    std::vector<std::string> failures;
};

int runBench(std::vector<std::string_view> const& words) {
    Options const options = readOptions(words);
    Plan const plan(options.seed, options.elements);
    Folder const folder;
    Settings settings;
    settings.changes = options.changes ? options.changes : plan.elements() / 10;
    settings.folder = folder.path;
    settings.sums = sumsOf(plan);
    settings.leanXml = LeanXmlPrint::of(plan);
    prepareDocuments(plan, settings);
    Bench bench(options, plan, settings);
    bench.run();
    options.json ? bench.printJson() : bench.printTable();
    return bench.sound() ? 0 : 1;
}

} // namespace

} // namespace zelkor::bench

int main(int count, char** words) {
    std::vector<std::string_view> const arguments(words + 1, words + count);
    if (std::find(arguments.begin(), arguments.end(), "--help") != arguments.end()) {
        std::fputs(zelkor::bench::usage, stdout);
        return 0;
    }
    try {
        return zelkor::bench::runBench(arguments);
    } catch (std::invalid_argument const& error) {
        std::fprintf(stderr, "bench_run: %s\n%s", error.what(), zelkor::bench::usage);
        return 2;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "bench_run: %s\n", error.what());
        return 1;
    }
}
