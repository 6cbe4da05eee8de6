#include "Stage.hpp"

#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <malloc.h>
#include <memory>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace zelkor::bench {

namespace {

/// The number of KiB that a file under /proc tells behind `key`.
std::uint64_t kilobytes(char const* path, std::string_view key) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        if (line.compare(0, key.size(), key) == 0) return std::stoull(line.substr(key.size()));
    throw std::runtime_error("no " + std::string(key) + " in " + path);
}

/// Makes the heap resident, so that what follows pays for its work and not for page faults. More than any
/// contender needs for its model and its text together.
void warmHeap(std::size_t size) {
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
    auto const block = std::make_unique_for_overwrite<char[]>(size);
    for (std::size_t at = 0; at < size; at += 4096)
        static_cast<char volatile*>(block.get())[at] = 1;
}

/// What happens in the child; the sample tells a failure.
Sample runHere(Workload const& workload, Plan const& plan, Settings const& settings, Heap heap,
               void (*warm)(std::size_t)) {
    constexpr std::size_t bytesForElement = 2400;
    constexpr std::size_t ownBytesForElement = 500;
    try {
        malloc_trim(0);
        if (heap == Heap::Warm) {
            warmHeap(plan.elements() * bytesForElement + (std::size_t{16} << 20));
            if (warm) warm(plan.elements() * ownBytesForElement);
        }
        Stage stage(plan, settings, heap);
        workload.run(stage);
        return stage.result();
    } catch (std::exception const& error) {
        Sample sample;
        std::snprintf(sample.failure, sizeof sample.failure, "%s", error.what());
        return sample;
    }
}

struct SumSink {
    WalkSums sums;

    template <class Record>
    void add(Record const& record) {
        ++sums.elements;
        forEachFeature<Record>([&](auto const& feature) {
            auto const& value = record.*(feature.member);
            if constexpr (formOf<decltype(feature)> == Form::Text)
                sums.textBytes += value.size();
            else if constexpr (formOf<decltype(feature)> == Form::Reference)
                sums.references += value ? 1 : 0;
            else if constexpr (formOf<decltype(feature)> == Form::References)
                sums.references += value.size();
            else if constexpr (formOf<decltype(feature)> == Form::Child) {
                if (value) add(*value);
            } else if constexpr (formOf<decltype(feature)> == Form::Children) {
                for (auto const& contained : value)
                    add(contained);
            }
        });
        if constexpr (Record::kind == Kind::SourcePosition) sums.places += record.line + record.col;
    }

    void project(ProjectRecord const& record) { add(record); }
    void file(FileRecord const& record) { add(record); }
    void openScope(UnitRecord const& record) { add(record); }
    void openScope(NamespaceRecord const& record) { add(record); }
    void closeScope() {}
    template <class Record>
    void symbol(Record const& record) {
        add(record);
    }
};

} // namespace

Fingerprint Fingerprint::of(std::string_view text) {
    Fingerprint print;
    print.add(text);
    return print;
}

Fingerprint Fingerprint::ofFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    Fingerprint print;
    for (std::array<char, 65536> part; file.read(part.data(), part.size()) || file.gcount() > 0;)
        print.add({part.data(), static_cast<std::size_t>(file.gcount())});
    if (!file.eof()) throw std::runtime_error("cannot read " + path);
    return print;
}

void Fingerprint::add(std::string_view text) {
    for (char const letter : text) {
        if (letter == '\n') continue;
        std::uint64_t const value = static_cast<unsigned char>(letter);
        ++size;
        sum += value * (value + 1);
    }
}

void Stage::expectSums(WalkSums const& found) const {
    WalkSums const& wanted = settings.sums;
    auto const differ = [this](char const* what, std::uint64_t seen, std::uint64_t planned) {
        expect(seen == planned, std::string("walk: ") + what + " " + std::to_string(seen) + ", planned " +
                                    std::to_string(planned));
    };
    differ("elements", found.elements, wanted.elements);
    differ("text bytes", found.textBytes, wanted.textBytes);
    differ("lines and columns", found.places, wanted.places);
    differ("references", found.references, wanted.references);
}

void Stage::expectDocument(std::string_view text, Fingerprint const& wanted) {
    tellSize(text);
    Fingerprint const found = Fingerprint::of(text);
    expect(found == wanted, "document of " + std::to_string(found.size) +
                                " bytes is not the planned one of " + std::to_string(wanted.size));
}

std::string Stage::readDocument(std::string const& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    expect(file.good(), "cannot read " + path);
    std::string text(static_cast<std::size_t>(file.tellg()), '\0');
    file.seekg(0);
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    expect(file.good(), "cannot read all of " + path);
    tellSize(text);
    return text;
}

std::uint64_t Stage::residentBytes() {
    malloc_trim(0);
    return kilobytes("/proc/self/smaps_rollup", "Anonymous:") * 1024;
}

std::uint64_t Stage::resetPeak() {
    malloc_trim(0);
    if (!(std::ofstream("/proc/self/clear_refs") << "5" << std::flush))
        throw std::runtime_error("cannot reset the peak of resident memory");
    return kilobytes("/proc/self/status", "VmRSS:") * 1024;
}

std::uint64_t Stage::peakBytes() {
    return kilobytes("/proc/self/status", "VmHWM:") * 1024;
}

void Stage::setBytes(std::uint64_t before, std::uint64_t after) {
    expect(heap == Heap::Cold, "memory is measured on a cold heap");
    sample.value =
        (static_cast<double>(after) - static_cast<double>(before)) / static_cast<double>(sample.units);
}

Sample runApart(Workload const& workload, Plan const& plan, Settings const& settings, Heap heap,
                void (*warm)(std::size_t bytes)) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe to a child process");
    std::fflush(nullptr);
    pid_t const child = fork();
    if (child < 0) throw std::runtime_error("no child process");
    if (child == 0) {
        close(ends[0]);
        Sample const sample = runHere(workload, plan, settings, heap, warm);
        bool const whole = write(ends[1], &sample, sizeof sample) == static_cast<ssize_t>(sizeof sample);
        _exit(whole ? 0 : 1);
    }
    close(ends[1]);
    Sample sample;
    ssize_t const got = read(ends[0], &sample, sizeof sample);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (got != static_cast<ssize_t>(sizeof sample)) {
        sample = {};
        std::snprintf(sample.failure, sizeof sample.failure, "ended by %s %d",
                      WIFSIGNALED(status) ? "signal" : "status",
                      WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
    }
    return sample;
}

WalkSums sumsOf(Plan const& plan) {
    SumSink sink;
    plan.replay(sink);
    return sink.sums;
}

} // namespace zelkor::bench
