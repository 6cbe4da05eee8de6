// One unit as the front end shows it to the checks, which share nothing with the producer.
#pragma once

#include "ModelIndex.hpp"

#include <clang-c/Index.h>

#include <string>
#include <vector>

namespace zelkor::producer::test {

struct WalkedUnit {
    std::string directory;
    std::vector<std::string> arguments;
};

class ParsedUnit {
  public:
    ParsedUnit(WalkedUnit const& unit, std::string const& resourceDirectory, unsigned options);
    ~ParsedUnit();
    ParsedUnit(ParsedUnit const&) = delete;
    ParsedUnit& operator=(ParsedUnit const&) = delete;

    bool isValid() const { return unit_ != nullptr; }
    CXCursor root() const { return clang_getTranslationUnitCursor(unit_); }

  private:
    CXIndex index_;
    CXTranslationUnit unit_ = nullptr;
};

// Where a cursor is, with the name that the model has for the file; false when it is in none.
bool placeOf(CXCursor cursor, std::string const& projectRoot, Place& place);
bool isInProject(Place const& place);
std::string textOf(Place const& place);

} // namespace zelkor::producer::test
