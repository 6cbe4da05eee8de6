// Units are read in any order and handed out in theirs.
#pragma once

#include "Facts.hpp"

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace zelkor::producer {

class ParallelReader {
  public:
    // Gives the unit to the sink, and may go on to clean up after that.
    using Read = std::function<void(std::size_t number, UnitSink const& sink)>;

    // `read` is called on `jobs` threads; what it throws, `take` throws.
    ParallelReader(std::size_t units, Read read, unsigned jobs);
    // Waits for the units that are being read, and for what is cleaned up after others.
    ~ParallelReader();
    ParallelReader(ParallelReader const&) = delete;
    ParallelReader& operator=(ParallelReader const&) = delete;

    // Waits for the files of a unit, or for the unit. Valid until the unit is taken, and then as its own.
    std::span<FileFact const> files(std::size_t number);
    // Waits for the unit; each may be taken once, in ascending order.
    UnitFacts take(std::size_t number);

  private:
    struct Result {
        std::optional<std::span<FileFact const>> files;
        std::optional<UnitFacts> unit;
    };

    void setUnit(std::size_t number, UnitFacts&& unit);
    void setFiles(std::size_t number, std::span<FileFact const> files);
    std::optional<std::size_t> next();
    void work();
    void stop();

    Read read_;
    std::mutex mutex_;
    std::condition_variable ready_;
    std::condition_variable room_;
    std::vector<Result> results_;
    std::size_t window_;
    std::size_t started_ = 0;
    std::size_t taken_ = 0;
    bool isStopped_ = false;
    std::exception_ptr failure_;
    std::vector<std::thread> threads_; // last, so that all else is there when they start
};

} // namespace zelkor::producer
