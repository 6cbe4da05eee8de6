// Facts of translation units in a file, so that another process, on this machine or on another, goes on with
// them.
#pragma once

#include "Facts.hpp"
#include "Producer.hpp"

#include <string>
#include <vector>

namespace zelkor::producer {

// What is known of a unit before its facts are read.
struct UnitHead {
    std::string root; // of the project, which the names of files are told from
    std::string file; // main file, as in the model
    Digest command{}; // of all that decides how the front end reads the unit, apart from the content of files
    bool hasUses = true; // what bodies call, read and write
    std::vector<InputFile> inputs;
};

// A file that is no unit file, was made by other tools, or is damaged; `what()` tells which and what to do.
class UnitFileError : public ImportError {
  public:
    using ImportError::ImportError;
};

// This program and its front end: facts of other ones are not taken.
std::string const& toolLine();

class UnitFileWriter {
  public:
    void add(UnitHead const& head, UnitFacts const& facts);
    // The bytes of the file, which depend on nothing but what was added.
    std::string finish() const;

  private:
    std::vector<UnitHead> heads_;
    std::string bodies_;
};

class UnitFile {
  public:
    // Reads the file and checks it whole. Throws UnitFileError.
    explicit UnitFile(std::string const& path);
    UnitFile(UnitFile const&) = delete;
    UnitFile& operator=(UnitFile const&) = delete;

    std::vector<UnitHead> const& heads() const { return heads_; }
    // Decodes the facts of a unit, in time linear in its size. Throws UnitFileError.
    UnitFacts facts(std::size_t number) const;

  private:
    std::string path_;
    std::string bytes_;
    std::vector<UnitHead> heads_;
    std::vector<std::string_view> bodies_; // in `bytes_`
};

// Puts a new file in the place of the old one, which stays until the new one is whole. Makes missing folders.
// Throws ImportError with the reason.
void replaceFile(std::string const& path, std::string_view bytes);

} // namespace zelkor::producer
