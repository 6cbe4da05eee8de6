// What the code-insight records of a model say: the one place where the verbs read them.
#pragma once

#include <zelkor/ast.hpp>

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace zelkor::command {

/// All that is recorded about a function, or about the initializer of a variable, however many records there
/// are.
struct Use {
    brant::zero::ModelElement user;                ///< a function or a variable
    std::vector<zelkor::ast::Function> calls = {}; ///< each once, in the order of the records
    std::vector<zelkor::ast::Variable> reads = {};
    std::vector<zelkor::ast::Variable> writes = {};
    std::vector<zelkor::ast::Symbol> points =
        {};                   ///< whose address it takes; of a variable, what it was made to point at
    bool isBodyKnown = false; ///< a record describes the body
    bool isAddressTaken = false;
};

class Insight {
  public:
    /// Linear in the size of the model. \throws UsageError when the model has no such records; it says how to
    /// get them.
    explicit Insight(zelkor::ast::Ast const& ast);

    /// In the order of the model.
    [[nodiscard]] std::vector<Use> const& uses() const noexcept { return uses_; }
    /// \returns the methods that a virtual call of `method` may run in its place, at any depth of derivation.
    [[nodiscard]] std::vector<zelkor::ast::Function> overridersOf(zelkor::ast::Function const& method) const;
    /// \returns the functions that a pointer may hold, as far as the model tells; none for what
    /// `isFunctionPointer` is false for.
    [[nodiscard]] std::vector<zelkor::ast::Function>
    functionsBehind(zelkor::ast::Variable const& pointer) const;
    /// \returns whether a pointer to functions may hold others than `functionsBehind`: nothing tells what it
    /// holds, it is a parameter, or someone writes it who takes the address of none of these.
    [[nodiscard]] bool mayHoldOthers(zelkor::ast::Variable const& pointer) const;
    /// \returns the record of a variable, or a null handle.
    [[nodiscard]] zelkor::ast::codeinsight::VariableInfo
    recordOf(zelkor::ast::Variable const& variable) const;

  private:
    using Body = brant::zero::ModelElementImpl const*;

    Use& use(brant::zero::ModelElement const& user);
    void add(zelkor::ast::codeinsight::FunctionInfo const& record);
    void add(zelkor::ast::codeinsight::VariableInfo const& record);
    void add(zelkor::ast::codeinsight::FunInfo const& annotation, brant::zero::ModelElement const& user);
    void findOpenPointers();

    std::vector<Use> uses_;
    std::unordered_map<Body, std::size_t> indices_;
    std::unordered_map<Body, std::vector<zelkor::ast::Function>> overriders_; ///< at one step
    std::unordered_map<Body, zelkor::ast::codeinsight::VariableInfo> variables_;
    std::unordered_set<Body> writtenFromElsewhere_; ///< pointers to functions
};

/// \returns whether the variable holds pointers to functions: one, or an array of them.
[[nodiscard]] bool isFunctionPointer(zelkor::ast::Variable const& variable);

/// \returns the function that `function` was made from when a template made it, or a null handle: by its
/// template, or, for a method of a class made from a template, the method at the same place in the class that
/// stands for the template.
[[nodiscard]] zelkor::ast::Function patternOf(zelkor::ast::Function const& function);

/// \returns whether the function stands for a template, or is a method of a class that does.
[[nodiscard]] bool isPattern(zelkor::ast::Function const& function);

} // namespace zelkor::command
