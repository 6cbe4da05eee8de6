#include "io/SampleModel.hpp"
#include "io/TextSupport.hpp"

#include <brant/zero/io/Parser.hpp>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace zelkor::test;
using brant::zero::io::FileError;
namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "zelkor-files-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
    }
    void TearDown() override { fs::remove_all(folder); }

    static std::string content(fs::path const& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
    }
    /// \returns what a save that must fail says.
    static std::string failure(fs::path const& path) {
        za::Ast ast = makeSampleModel();
        try {
            za::io::serializeToFile(ast, path.u16string(), IoFormat::json);
        } catch (FileError const& error) {
            EXPECT_EQ(error.getPath(), path.string());
            return error.getReason();
        }
        return "the file was written";
    }

    fs::path folder;
};

TEST_F(Files, HoldWhatStringsHold) {
    za::Ast ast = makeSampleModel();
    for (IoFormat const format : {IoFormat::json, IoFormat::xml}) {
        fs::path const path = folder / u"model \u00e9\u20ac";
        za::io::serializeToFile(ast, path.u16string(), format);
        EXPECT_EQ(content(path), save(ast, format));
        EXPECT_EQ(difference(ast, za::io::deserializeFromFile(path.u16string(), format)), "");
    }
    EXPECT_EQ(entries(), 1u) << "nothing but the target may stay";
}

TEST_F(Files, AreReplacedThroughLinksAndKeepTheirPermissions) {
    za::Ast ast = makeSampleModel();
    fs::create_directory(folder / "inner");
    fs::path const target = folder / "inner" / "target";
    std::ofstream(target) << "old";
    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
    fs::create_symlink("inner/target", folder / "link");
    fs::create_symlink(folder / "link", folder / "chain");
    za::io::serializeToFile(ast, (folder / "chain").u16string(), IoFormat::json);
    EXPECT_TRUE(fs::is_symlink(folder / "chain"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(content(target), save(ast, IoFormat::json));
    EXPECT_EQ(fs::status(target).permissions(), fs::perms(0640));
    fs::create_symlink("inner/new", folder / "dangling");
    za::io::serializeToFile(ast, (folder / "dangling").u16string(), IoFormat::json);
    EXPECT_TRUE(fs::is_regular_file(folder / "inner" / "new"));
    fs::create_symlink("b", folder / "a");
    fs::create_symlink("a", folder / "b");
    EXPECT_EQ(failure(folder / "a"), "Too many levels of symbolic links");
}

TEST_F(Files, LongNamesLeaveRoomForTheTemporaryOne) {
    za::Ast ast;
    fs::path const path = folder / std::string(255, 'n');
    za::io::serializeToFile(ast, path.u16string(), IoFormat::xml);
    EXPECT_EQ(content(path), save(ast, IoFormat::xml));
}

TEST_F(Files, FailuresSayPathAndReason) {
    EXPECT_EQ(failure("/dev/full"), "No space left on device");
    EXPECT_EQ(failure(folder / "none" / "x"), "No such file or directory");
    EXPECT_EQ(failure(folder), "Is a directory");
    EXPECT_EQ(failure("/proc/model"), "No such file or directory"); // a folder in which nothing can be made
    std::ofstream(folder / "file") << "old";
    EXPECT_EQ(failure(folder / "file" / "x"), "Not a directory");
    za::Ast ast;
    EXPECT_THROW(za::io::serializeToFile(ast, u"", IoFormat::json), FileError);
    EXPECT_THROW(za::io::serializeToFile(ast, std::u16string(u"a\0b", 3), IoFormat::json), FileError);
    EXPECT_THROW(za::io::serializeToFile(ast, u"\xD800", IoFormat::json), FileError);
    EXPECT_EQ(content(folder / "file"), "old");
    EXPECT_EQ(entries(), 1u);
}

/// Another account meets the permissions that the administrator's passes by; the check runs in a child
/// process.
TEST_F(Files, WhatIsProtectedStays) {
    std::ofstream(folder / "file") << "old";
    fs::create_directory(folder / "locked");
    std::ofstream(folder / "locked" / "file") << "old";
    ASSERT_EQ(::chmod((folder / "file").c_str(), 0444), 0);
    ASSERT_EQ(::chmod((folder / "locked").c_str(), 0555), 0);
    ASSERT_EQ(::chmod((folder / "locked" / "file").c_str(), 0666), 0);
    ASSERT_EQ(::chmod(folder.c_str(), 0777), 0);
    auto const saveAsAnother = [&] {
        bool const changed = ::geteuid() != 0 || ::seteuid(65534) == 0;
        bool const kept = failure(folder / "file") == "Permission denied" &&
                          failure(folder / "locked" / "file") == "Permission denied" &&
                          failure(folder / "locked" / "new") == "Permission denied";
        std::_Exit(changed && kept ? 0 : 1);
    };
    EXPECT_EXIT(saveAsAnother(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(content(folder / "file"), "old");
    EXPECT_EQ(content(folder / "locked" / "file"), "old");
    ASSERT_EQ(::chmod((folder / "locked").c_str(), 0755), 0);
}

TEST_F(Files, AFullDiskLeavesTheOldFile) {
    std::ofstream(folder / "file") << "old";
    // A limit on the size of files stands for the full disk: both refuse the write in its middle.
    auto const saveInLittleRoom = [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit const small{.rlim_cur = 16 * 1024, .rlim_max = 16 * 1024};
        bool const limited = ::setrlimit(RLIMIT_FSIZE, &small) == 0;
        std::_Exit(limited && failure(folder / "file") == "File too large" ? 0 : 1);
    };
    EXPECT_EXIT(saveInLittleRoom(), testing::ExitedWithCode(0), "");
    EXPECT_EQ(content(folder / "file"), "old");
    EXPECT_EQ(entries(), 1u);
}

TEST_F(Files, PipesAreWrittenAndReadDirectly) {
    za::Ast ast = makeSampleModel();
    fs::path const pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string read;
    std::thread reader([&] { read = content(pipe); });
    za::io::serializeToFile(ast, pipe.u16string(), IoFormat::xml);
    reader.join();
    EXPECT_EQ(read, save(ast, IoFormat::xml));
    EXPECT_TRUE(fs::is_fifo(pipe));
    std::thread writer([&] { std::ofstream(pipe) << read; });
    EXPECT_EQ(difference(ast, za::io::deserializeFromFile(pipe.u16string(), IoFormat::xml)), "");
    writer.join();
}

TEST_F(Files, ThatCannotBeReadSaySo) {
    for (auto const& [path, reason] :
         {std::pair(folder / "none", "No such file or directory"), {folder, "Is a directory"}})
        try {
            static_cast<void>(za::io::deserializeFromFile(path.u16string(), IoFormat::json));
            ADD_FAILURE() << path << " was read";
        } catch (FileError const& error) {
            EXPECT_EQ(error.getPath(), path.string());
            EXPECT_EQ(error.getReason(), reason);
        }
    std::ofstream(folder / "bad") << "{\n\"format\": 1";
    try {
        static_cast<void>(za::io::deserializeFromFile((folder / "bad").u16string(), IoFormat::json));
        ADD_FAILURE();
    } catch (ParseError const& error) {
        EXPECT_EQ(error.getFile(), (folder / "bad").string());
        EXPECT_EQ(error.getLine(), 2u);
        EXPECT_EQ(error.getColumn(), 11u);
    }
}

TEST_F(Files, TheUriIsKeptWhenAsked) {
    za::Ast ast;
    std::u16string const path = (folder / "m").u16string();
    za::io::serializeToFile(ast, path, IoFormat::json);
    brant::zero::io::JSONParser parser;
    parser.parseFile(path);
    EXPECT_EQ(parser.modelUri(), u"");
    parser.parseFile(path, brant::zero::io::Parser::UpdateModelURI::Yes);
    EXPECT_EQ(parser.modelUri(), path);
}

} // namespace
