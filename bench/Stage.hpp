// What a contender's workload gets: the plan, the documents, and the means to measure and to check itself.
// Each workload runs once in a process of its own, which ends afterwards.
#pragma once

#include "Plan.hpp"

#include <cstdint>
#include <ctime>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zelkor::bench {

enum class Heap { Warm, Cold };

/// What visiting a whole model adds up to; every contender must come to the plan's sums.
struct WalkSums {
    std::uint64_t elements = 0;
    std::uint64_t textBytes = 0;  // all texts: names, paths, values
    std::uint64_t places = 0;     // lines and columns
    std::uint64_t references = 0; // set references, each one of many counted

    friend bool operator==(WalkSums const&, WalkSums const&) = default;
};

/// Tells documents apart without regard to the order of their parts and to line breaks.
struct Fingerprint {
    std::uint64_t size = 0;
    std::uint64_t sum = 0;

    static Fingerprint of(std::string_view text);
    static Fingerprint ofFile(std::string const& path);
    void add(std::string_view text);
    friend bool operator==(Fingerprint const&, Fingerprint const&) = default;
};

struct Settings {
    unsigned changes = 0;  // in the transaction workloads
    std::string folder;    // holds the documents
    WalkSums sums;         // of the plan
    Fingerprint json, xml; // of the floor's documents
    Fingerprint leanXml;   // of what the XML peers write
};

/// The result of one run, handed over between processes as plain bytes.
struct Sample {
    double value = 0;        // nanoseconds or bytes for each unit
    std::uint64_t units = 0; // elements or changes
    std::uint64_t documentSize = 0;
    char failure[256] = {};
};

class Stage {
  public:
    Stage(Plan const& plan_, Settings const& settings_, Heap heap_)
        : plan(plan_), settings(settings_), sample{.units = plan_.elements()}, heap(heap_) {}

    Plan const& plan;
    Settings const& settings;

    /// Runs `work` and takes its processor time, this thread's and any other's.
    template <class Work>
    void measure(Work&& work) {
        double const before = processorNanoseconds();
        work();
        sample.value = (processorNanoseconds() - before) / static_cast<double>(sample.units);
    }

    /// Takes the resident bytes that `work` leaves behind, freed pages given back first.
    template <class Work>
    void measureMemory(Work&& work) {
        std::uint64_t const before = residentBytes();
        work();
        setBytes(before, residentBytes());
    }

    /// Takes the most resident bytes at any time of `work` over those before it.
    template <class Work>
    void measurePeak(Work&& work) {
        std::uint64_t const before = resetPeak();
        work();
        setBytes(before, peakBytes());
    }

    void countUnits(std::uint64_t units) { sample.units = units; }
    void expect(bool held, std::string const& what) const {
        if (!held) throw std::runtime_error(what);
    }
    void expectSums(WalkSums const& found) const;
    /// A written document must be the floor's, up to the order of its parts.
    void expectDocument(std::string_view text, Fingerprint const& wanted);
    void tellSize(std::string_view document) { sample.documentSize = document.size(); }

    std::string jsonPath() const { return settings.folder + "/model.json"; }
    std::string xmlPath() const { return settings.folder + "/model.xml"; }
    /// The document's text; read before measuring.
    std::string readDocument(std::string const& path);

    Sample const& result() const { return sample; }
    Heap heapState() const { return heap; }

  private:
    static double processorNanoseconds() {
        timespec now{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
    }
    static std::uint64_t residentBytes();
    static std::uint64_t resetPeak();
    static std::uint64_t peakBytes();
    void setBytes(std::uint64_t before, std::uint64_t after);

    Sample sample;
    Heap heap;
};

struct Workload {
    std::string_view name;
    void (*run)(Stage&);
};

struct Contender {
    std::string_view name;
    std::vector<Workload> workloads;
    /// Makes memory resident that does not come from the C library's heap; null where there is none.
    void (*warm)(std::size_t bytes) = nullptr;

    Workload const* find(std::string_view wanted) const {
        for (Workload const& workload : workloads)
            if (workload.name == wanted) return &workload;
        return nullptr;
    }
};

/// Runs a workload in a child process. A failed check, a throw or a crash gives a sample that tells it.
Sample runApart(Workload const& workload, Plan const& plan, Settings const& settings, Heap heap,
                void (*warm)(std::size_t bytes) = nullptr);

/// The sums that a walk over the plan's model must come to.
WalkSums sumsOf(Plan const& plan);

} // namespace zelkor::bench
