// Fixtures as facts, and text of facts to compare with.
#pragma once

#include "Merge.hpp"
#include "UnitParser.hpp"

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zelkor::producer::test {

std::filesystem::path fixtures();

// A directory below the system's temporary one, removed with this object.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(TemporaryDirectory const&) = delete;
    TemporaryDirectory& operator=(TemporaryDirectory const&) = delete;

    std::filesystem::path const& path() const { return path_; }
    std::filesystem::path write(std::string const& name, std::string_view text) const;

  private:
    std::filesystem::path path_;
};

// A project of files that a test writes, merged unit by unit.
struct WrittenProject {
    TemporaryDirectory directory;
    ProjectFacts facts;

    // Headers, whose names end in ".h" or ".hpp", are only written.
    void add(std::string const& file, std::string_view text, std::vector<std::string> const& options = {});
};

// Parses a file as if the database had it with these options; the directory is also the project root.
UnitFacts parse(std::string const& file, std::vector<std::string> const& options = {},
                std::filesystem::path const& directory = fixtures());

// The first entity of a kind and name; `owner` is the name of the entity around it, when that matters.
Entity const* findEntity(UnitFacts const& facts, EntityKind kind, std::string_view name,
                         std::string_view owner = "*");

// A type in prefix form: "pointer(const(int))", names of declared types as they are.
std::string typeText(UnitFacts const& facts, Id const& id);

// "int 5", "float 0.1", "{int 1, repeat}".
std::string constantText(ConstantFact const& constant);

// The words whose flag is set, with blanks between.
using Flags = std::vector<std::pair<bool, std::string>>;
std::string wordsOf(Flags const& flags);

// What is known of a function, a variable or a record: its type, then storage, linkage, access and what else
// is set.
std::string factText(UnitFacts const& facts, Entity const& entity);

} // namespace zelkor::producer::test
