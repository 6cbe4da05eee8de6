#include "UnitCache.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <utility>

#include <unistd.h>

namespace zelkor::producer {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::hours unusedLimit{24 * 30};
constexpr std::chrono::hours pruneInterval{24};

// Dates are facts that no file tells, and a header that is missing now may be there next time.
bool isRepeatable(UnitFacts const& facts) {
    static constexpr std::array<std::string_view, 3> dated{"__DATE__", "__TIME__", "__TIMESTAMP__"};
    return facts.failure.empty() && facts.missingHeaders.empty() &&
           std::none_of(facts.macros.begin(), facts.macros.end(), [](MacroFact const& macro) {
               return macro.isPredefined && std::find(dated.begin(), dated.end(), macro.name) != dated.end();
           });
}

void touch(fs::path const& path) {
    std::error_code ignored;
    fs::last_write_time(path, fs::file_time_type::clock::now(), ignored);
}

} // namespace

std::optional<Digest> FileDigests::of(std::string const& path) {
    {
        std::lock_guard const lock(mutex_);
        auto const found = known_.find(path);
        if (found != known_.end()) return found->second;
    }
    std::optional<Digest> const digest = digestOfFile(path);
    std::lock_guard const lock(mutex_);
    return known_.try_emplace(path, digest).first->second;
}

UnitCache::UnitCache(std::string directory) : directory_(std::move(directory)) {
    std::error_code error;
    fs::create_directories(directory_, error);
    if (!error && ::access(directory_.c_str(), W_OK | X_OK) != 0)
        error = std::error_code(errno, std::generic_category());
    if (error)
        throw ImportError(directory_ + ": no cache of units can be kept there: " + error.message() +
                          "; name another directory with --cache, or give --no-cache");
}

std::string UnitCache::pathOf(Digest const& command) const {
    std::string const name = toHex(command);
    return directory_ + '/' + name.substr(0, 2) + '/' + name.substr(2);
}

std::optional<UnitFacts> UnitCache::find(Digest const& command) {
    std::string const path = pathOf(command);
    if (::access(path.c_str(), F_OK) != 0) return std::nullopt;
    try {
        UnitFile const file(path);
        if (file.heads().size() != 1 || file.heads()[0].command != command)
            throw UnitFileError(path + ": is of another unit");
        for (InputFile const& input : file.heads()[0].inputs) {
            if (digests_.of(input.path) != input.content) return std::nullopt;
        }
        UnitFacts facts = file.facts(0);
        touch(path);
        ++hits_;
        return facts;
    } catch (UnitFileError const& error) {
        note(std::string("cache: ") + error.what());
        return std::nullopt;
    }
}

void UnitCache::store(Digest const& command, std::string const& root, UnitFacts const& facts) {
    if (!isRepeatable(facts)) return;
    UnitFileWriter writer;
    writer.add({root, facts.file, command, true, facts.inputs}, facts);
    try {
        replaceFile(pathOf(command), writer.finish());
    } catch (ImportError const& error) {
        note(std::string("cache: ") + error.what());
    }
}

void UnitCache::prune() {
    fs::path const mark = fs::path(directory_) / "pruned";
    auto const now = fs::file_time_type::clock::now();
    std::error_code error;
    auto const last = fs::last_write_time(mark, error);
    if (!error && now - last < pruneInterval) return;
    try {
        replaceFile(mark.string(), "");
    } catch (ImportError const&) {
        return;
    }
    fs::recursive_directory_iterator entry(directory_, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (!entry->is_regular_file(ignored)) continue;
        auto const used = entry->last_write_time(ignored);
        if (!ignored && now - used > unusedLimit) fs::remove(entry->path(), ignored);
    }
}

void UnitCache::note(std::string text) {
    std::lock_guard const lock(mutex_);
    notes_.push_back(std::move(text));
}

std::vector<std::string> UnitCache::takeNotes() {
    std::lock_guard const lock(mutex_);
    return std::exchange(notes_, {});
}

} // namespace zelkor::producer
