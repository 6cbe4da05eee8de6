// Units that were read before, kept as unit files, so that what did not change is not parsed again.
#pragma once

#include "UnitFile.hpp"

#include <atomic>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace zelkor::producer {

// Digests of files as they are now; each file is read once. May be shared by threads.
class FileDigests {
  public:
    std::optional<Digest> of(std::string const& path);

  private:
    std::mutex mutex_;
    std::unordered_map<std::string, std::optional<Digest>> known_;
};

// A directory with one file for each command. May be shared by threads, and the directory by processes.
class UnitCache {
  public:
    // Makes the directory when it is not there. Throws ImportError when it cannot be written to.
    explicit UnitCache(std::string directory);

    // The unit as it was stored, unless a file that it was made of has changed since, or the entry is
    // damaged.
    std::optional<UnitFacts> find(Digest const& command);
    // Keeps the unit unless its facts may be others next time although no file changes. Failing is no error:
    // the unit is parsed again next time.
    void store(Digest const& command, std::string const& root, UnitFacts const& facts);
    // Removes what nobody used for a month; looks once a day.
    void prune();

    std::size_t hits() const { return hits_; }
    // What went wrong with entries, in words.
    std::vector<std::string> takeNotes();

  private:
    std::string pathOf(Digest const& command) const;
    void note(std::string text);

    std::string directory_;
    FileDigests digests_;
    std::atomic<std::size_t> hits_{0};
    std::mutex mutex_;
    std::vector<std::string> notes_;
};

} // namespace zelkor::producer
