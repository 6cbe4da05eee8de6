// Writing a file so that its old content stays until the new one is whole.

#include "FilePath.hpp"
#include "Sink.hpp"

#include "brant/zero/Uuid.hpp"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brant::zero::io {

namespace {

std::string folderOf(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// Follows a chain of symbolic links to the name at its end, which need not exist.
std::string followLinks(std::string path) {
    constexpr int longestChain = 40; // as the system's own limit
    for (int i = 0; i < longestChain; ++i) {
        char target[PATH_MAX];
        ssize_t const length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0) return path;
        std::string next(target, static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : folderOf(path) + "/" + next;
    }
    throw FileError(path, reasonOf(ELOOP));
}

class FileSink final : public Sink {
  public:
    explicit FileSink(std::u16string const& path) : path_(toFilePath(path)) {}
    ~FileSink() override {
        if (file_ >= 0) ::close(file_);
        if (!temporary_.empty()) ::unlink(temporary_.c_str());
    }

    void begin() override {
        struct stat present {};
        bool const exists = ::stat(path_.c_str(), &present) == 0;
        if (!exists && errno != ENOENT) fail();
        if (exists && S_ISDIR(present.st_mode)) throw FileError(path_, reasonOf(EISDIR));
        if (exists && !S_ISREG(present.st_mode)) {
            file_ = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC);
            if (file_ < 0) fail();
            return;
        }
        // Renaming asks for the permission of the folder only; a file that is protected is to stay.
        if (exists && ::faccessat(AT_FDCWD, path_.c_str(), W_OK, AT_EACCESS) != 0) fail();
        target_ = followLinks(path_);
        openTemporary();
        if (exists) {
            static_cast<void>(::fchown(file_, present.st_uid, present.st_gid) == 0);
            if (::fchmod(file_, present.st_mode & 07777) != 0) fail();
        }
    }

    void write(char const* bytes, std::size_t size) override {
        while (size > 0) {
            ssize_t const written = ::write(file_, bytes, size);
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) fail();
            bytes += written;
            size -= static_cast<std::size_t>(written);
            written_ += written;
        }
        startDisk();
    }

    void finish() override {
        if (temporary_.empty()) {
            if (::close(std::exchange(file_, -1)) != 0) fail();
            return;
        }
        if (::fsync(file_) != 0 || ::close(std::exchange(file_, -1)) != 0) fail();
        if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail();
        temporary_.clear();
        syncFolder();
    }

  private:
    [[noreturn]] void fail() const { throw FileError(path_, reasonOf(errno)); }

    /// Has the disk begin with what is written, so that `finish` waits for the rest only. No more than a
    /// hint: not every file can do it.
    void startDisk() noexcept {
#ifdef SYNC_FILE_RANGE_WRITE
        constexpr off64_t piece = 4 << 20;
        if (temporary_.empty() || written_ - started_ < piece) return;
        static_cast<void>(::sync_file_range(file_, started_, written_ - started_, SYNC_FILE_RANGE_WRITE) ==
                          0);
        started_ = written_;
#endif
    }

    void openTemporary() {
        // A name of its own length, not derived from the target's, which may be as long as names can be.
        do {
            temporary_ = folderOf(target_) + "/.zelkor-" + toString(generateUuid()).substr(0, 13);
            file_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        } while (file_ < 0 && errno == EEXIST);
        if (file_ < 0) {
            temporary_.clear();
            fail();
        }
    }

    /// Makes the new name last through a crash. The text itself is safe by now, so a folder that cannot be
    /// flushed (some file systems refuse it) is no failure.
    void syncFolder() const noexcept {
        int const folder = ::open(folderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder < 0) return;
        ::fsync(folder);
        ::close(folder);
    }

    std::string path_;      ///< as given, for messages
    std::string target_;    ///< behind all links
    std::string temporary_; ///< empty when there is none to remove
    int file_ = -1;
    off64_t written_ = 0;
    off64_t started_ = 0; ///< on its way to the disk
};

} // namespace

std::unique_ptr<Sink> makeFileSink(std::u16string const& path) {
    return std::make_unique<FileSink>(path);
}

} // namespace brant::zero::io
