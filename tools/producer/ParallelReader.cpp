#include "ParallelReader.hpp"

#include <utility>

namespace zelkor::producer {

ParallelReader::ParallelReader(std::size_t units, Read read, unsigned jobs)
    : read_(std::move(read)), results_(units), window_(std::size_t{jobs} * 4) {
    for (unsigned i = 0; i < jobs; ++i)
        threads_.emplace_back([this] { work(); });
}

ParallelReader::~ParallelReader() {
    stop();
    for (std::thread& thread : threads_)
        thread.join();
}

void ParallelReader::stop() {
    std::lock_guard const lock(mutex_);
    isStopped_ = true;
    room_.notify_all();
}

std::span<FileFact const> ParallelReader::files(std::size_t number) {
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [&] { return results_[number].files.has_value() || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    return *results_[number].files;
}

UnitFacts ParallelReader::take(std::size_t number) {
    std::unique_lock lock(mutex_);
    ready_.wait(lock, [&] { return results_[number].unit.has_value() || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    UnitFacts facts = *std::move(results_[number].unit);
    results_[number] = {};
    taken_ = number + 1;
    room_.notify_all();
    return facts;
}

// The number of the next unit to read, or nothing; waits while the units that nobody took are too many.
std::optional<std::size_t> ParallelReader::next() {
    std::unique_lock lock(mutex_);
    room_.wait(lock,
               [&] { return isStopped_ || started_ >= results_.size() || started_ < taken_ + window_; });
    if (isStopped_ || started_ >= results_.size()) return std::nullopt;
    return started_++;
}

void ParallelReader::setFiles(std::size_t number, std::span<FileFact const> files) {
    std::lock_guard const lock(mutex_);
    results_[number].files = files;
    ready_.notify_all();
}

void ParallelReader::setUnit(std::size_t number, UnitFacts&& unit) {
    std::lock_guard const lock(mutex_);
    Result& result = results_[number];
    result.unit = std::move(unit);
    result.files = result.unit->files;
    ready_.notify_all();
}

void ParallelReader::work() {
    try {
        while (std::optional<std::size_t> const number = next()) {
            read_(*number, {[&](UnitFacts&& unit) { setUnit(*number, std::move(unit)); },
                            [&](std::span<FileFact const> files) { setFiles(*number, files); }});
        }
    } catch (...) {
        std::lock_guard const lock(mutex_);
        failure_ = std::current_exception();
        isStopped_ = true;
        ready_.notify_all();
        room_.notify_all();
    }
}

} // namespace zelkor::producer
