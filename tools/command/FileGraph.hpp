// Which file includes which.
#pragma once

#include <zelkor/ast.hpp>

#include <string>
#include <unordered_map>
#include <vector>

namespace zelkor::command {

class FileGraph {
  public:
    struct Edge {
        std::size_t file;    ///< the other end
        std::string written; ///< the name as the first directive wrote it; empty when the model does not tell
    };

    explicit FileGraph(zelkor::ast::Ast const& ast);

    /// Files in the order of the model.
    [[nodiscard]] std::vector<zelkor::ast::source::SourceFile> const& files() const noexcept {
        return files_;
    }
    [[nodiscard]] std::size_t indexOf(zelkor::ast::source::SourceFile const& file) const {
        return indices_.at(file.get());
    }
    /// Included files in source order, each once; or the files that include it.
    [[nodiscard]] std::vector<Edge> const& edges(std::size_t file, bool forward) const {
        return (forward ? included_ : includers_)[file];
    }
    /// \returns how many files are reached, the file itself not counted; of them only top-level files with
    /// `onlyUnits`.
    [[nodiscard]] std::size_t countReached(std::size_t file, bool forward, bool onlyUnits) const;

  private:
    std::vector<zelkor::ast::source::SourceFile> files_;
    std::unordered_map<brant::zero::ModelElementImpl const*, std::size_t> indices_;
    std::vector<std::vector<Edge>> included_;
    std::vector<std::vector<Edge>> includers_;
};

} // namespace zelkor::command
