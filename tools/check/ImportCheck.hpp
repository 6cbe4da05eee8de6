// An import, and its check against the front end.
#pragma once

#include "Producer.hpp"

#include <zelkor/ast.hpp>

#include <filesystem>
#include <string>
#include <vector>

namespace zelkor::producer::test {

struct Imported {
    zelkor::ast::Ast ast;
    ImportResult result;

    zelkor::ast::Project project() const;
    std::string json() const;
};

Imported import(std::filesystem::path const& database, unsigned jobs, std::string const& root = {});

struct CheckReport {
    std::string text; // one line per kind: declarations of the front end, elements of the model
    std::vector<std::string> faults;
};

// Imports twice and with other threads, converts between the text forms, and walks all units again.
CheckReport checkImport(std::filesystem::path const& database, std::string const& root,
                        std::string const& resourceDirectory);

} // namespace zelkor::producer::test
