/// \file
/// The object by which a client holds a whole model.
#pragma once

#include "zelkor/ast/Project.hpp"

namespace zelkor::ast {

/// A model and, when it came from a text, the project found in it. Copies share the model.
class ZELKOR_API Ast {
  public:
    /// Makes a new, empty model.
    Ast();
    /// Adopts a model; a null or dead handle gives a new model. Looks for no project.
    explicit Ast(brant::zero::Model model);

    /// True when both hold the very same model and project.
    friend bool operator==(Ast const& a, Ast const& b) noexcept {
        return a.model_ == b.model_ && a.project_ == b.project_;
    }
    /// \returns the project; null unless a text with one was read.
    [[nodiscard]] Project getProject() const { return project_; }
    [[nodiscard]] brant::zero::Model getModel() const { return model_; }

  private:
    friend struct AstAccess;
    brant::zero::Model model_;
    Project project_;
};

} // namespace zelkor::ast
