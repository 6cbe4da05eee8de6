// What the code-insight records of a model say: the one place where the verbs read them.
#pragma once

#include <zelkor/ast.hpp>

#include <optional>
#include <unordered_map>
#include <vector>

namespace zelkor::command {

/// All that is recorded about one function, however many records it has.
struct FunctionUse {
    zelkor::ast::Function function;
    std::vector<zelkor::ast::Function> calls = {}; ///< each once, in the order of the records
    std::vector<zelkor::ast::Variable> reads = {};
    std::vector<zelkor::ast::Variable> writes = {};
    bool isBodyKnown = false; ///< a record describes its body
    bool isAddressTaken = false;
};

class Insight {
  public:
    /// Linear in the size of the model. \throws UsageError when the model has no such records; it says how to
    /// get them.
    explicit Insight(zelkor::ast::Ast const& ast);

    /// Functions with records in the order of the model, then those that are only called.
    [[nodiscard]] std::vector<FunctionUse> const& functions() const noexcept { return functions_; }
    [[nodiscard]] std::optional<std::size_t> indexOf(zelkor::ast::Function const& function) const;
    /// \returns the record of a variable, or a null handle.
    [[nodiscard]] zelkor::ast::codeinsight::VariableInfo
    recordOf(zelkor::ast::Variable const& variable) const;

  private:
    std::size_t use(zelkor::ast::Function const& function);
    void addRecord(zelkor::ast::codeinsight::FunctionInfo const& record);
    void addAnnotation(zelkor::ast::codeinsight::FunInfo const& annotation);

    std::vector<FunctionUse> functions_;
    std::unordered_map<brant::zero::ModelElementImpl const*, std::size_t> indices_;
    std::unordered_map<brant::zero::ModelElementImpl const*, zelkor::ast::codeinsight::VariableInfo>
        variables_;
};

/// \returns the function that `function` was made from when a template made it, or a null handle: by its
/// template, or, for a method of a class made from a template, the method at the same place in the class that
/// stands for the template.
[[nodiscard]] zelkor::ast::Function patternOf(zelkor::ast::Function const& function);

} // namespace zelkor::command
