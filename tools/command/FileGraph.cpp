#include "FileGraph.hpp"

#include "Lookup.hpp"

#include <algorithm>

namespace zelkor::command {

namespace za = zelkor::ast;
using za::source::SourceFile;

FileGraph::FileGraph(za::Ast const& ast) {
    forEachElement(ast, [this](brant::zero::ModelElement const& element) {
        if (auto const file = SourceFile::cast(element)) {
            indices_.emplace(file.get(), files_.size());
            files_.push_back(file);
        }
    });
    included_.resize(files_.size());
    includers_.resize(files_.size());
    for (std::size_t from = 0; from < files_.size(); ++from) {
        auto const& names = files_[from].getIncludedFileWrittenNames();
        std::size_t directive = 0;
        for (SourceFile const& included : files_[from].getIncludedFiles()) {
            std::size_t const position = directive++;
            auto const target = indices_.find(included.get());
            if (target == indices_.end()) continue; // a placeholder
            std::vector<Edge>& edges = included_[from];
            if (std::any_of(edges.begin(), edges.end(),
                            [&](Edge const& edge) { return edge.file == target->second; }))
                continue;
            std::string const written = position < names.size() ? brant::zero::toUtf8(names[position]) : "";
            edges.push_back({target->second, written});
            includers_[target->second].push_back({from, written});
        }
    }
}

std::size_t FileGraph::countReached(std::size_t file, bool forward, bool onlyUnits) const {
    std::vector<bool> seen(files_.size());
    std::vector<std::size_t> open{file};
    seen[file] = true;
    std::size_t count = 0;
    while (!open.empty()) {
        std::size_t const at = open.back();
        open.pop_back();
        if (at != file && (!onlyUnits || files_[at].getIsTopLevelFile())) ++count;
        for (Edge const& edge : edges(at, forward)) {
            if (!seen[edge.file]) open.push_back(edge.file);
            seen[edge.file] = true;
        }
    }
    return count;
}

} // namespace zelkor::command
