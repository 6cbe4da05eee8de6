// Names by which types are reached through using-declarations and alias templates. The front end tells only
// what stands behind such a type, so that the declaration is found by the name as written.
#pragma once

#include "SourceIndex.hpp"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace zelkor::producer {

class AliasIndex {
  public:
    explicit AliasIndex(SourceIndex& sources) : sources_(sources) {}

    // The typedef or alias template that a type is an instance of; a null cursor when it is none or not
    // known. `written` is the type as it stands in the source. The first call reads the names of the unit.
    CXCursor find(CXType type, std::string const& written);

  private:
    struct Entry {
        std::string qualified; // by which it is reached, inline and unnamed namespaces left out
        CXCursor declaration;
    };

    void collect(CXCursor scope, std::string const& path);
    void addTargets(CXCursor usingDeclaration, std::string const& path);
    CXCursor findTypedef(std::vector<Entry> const& entries, CXType type, std::string_view name) const;
    CXCursor findTemplate(std::vector<Entry> const& entries, CXType type, std::string_view written) const;

    SourceIndex& sources_;
    std::map<std::string, std::vector<Entry>, std::less<>> entries_; // by the last part of the name
    bool isCollected_ = false;
};

} // namespace zelkor::producer
