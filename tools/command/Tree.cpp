// `zelkor tree`: what contains what.

#include "Answers.hpp"

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

/// What a person looks for in a tree; the rest is passed through to what it contains. Hundreds of macros that
/// the compiler brings along would hide the few of the sources.
bool isShown(ModelElement const& element, bool all) {
    if (all || za::Project::cast(element) || za::source::CompilationUnit::cast(element)) return true;
    if (za::types::AggregateType::cast(element) || za::types::EnumType::cast(element)) return true;
    if (isPredefined(element)) return false;
    return hasName(element) && !simpleName(element).empty();
}

class Tree {
  public:
    Tree(Section& section, unsigned depth, bool all) : section_(section), depth_(depth), all_(all) {}

    void add(ModelElement const& root) {
        std::vector<Open> open{{root, 0, true}};
        while (!open.empty()) {
            Open const at = open.back();
            open.pop_back();
            bool const shown = at.isRoot || isShown(at.element, all_);
            if (shown) place(at);
            std::vector<ModelElement> const children = childrenOf(at.element);
            for (auto child = children.rbegin(); child != children.rend(); ++child)
                open.push_back({*child, at.level + (shown ? 1 : 0), false});
        }
        for (std::size_t row = first_; row < section_.rows.size(); ++row)
            if (hidden_[row] > 0) {
                section_.rows[row].note = std::to_string(hidden_[row]) + " inside";
                section_.rows[row].members.number("inside", hidden_[row]);
            }
        first_ = section_.rows.size();
    }

  private:
    struct Open {
        ModelElement element;
        unsigned level;
        bool isRoot;
    };

    /// Below the depth elements are counted at the row that they would stand under.
    void place(Open const& at) {
        if (at.level > depth_) {
            ++hidden_[rowAtDepth_];
            return;
        }
        if (at.level == depth_) rowAtDepth_ = section_.rows.size();
        Row row{at.element, {}, {}, at.level};
        row.members.number("depth", at.level);
        if (ModelElement const container = at.element.container())
            row.members.text("container", container->identifier());
        section_.rows.push_back(row);
        hidden_.push_back(0);
    }

    Section& section_;
    unsigned depth_;
    bool all_;
    std::size_t rowAtDepth_ = 0;
    std::size_t first_ = 0;
    std::vector<std::size_t> hidden_;
};

} // namespace

int runTree(Arguments const& arguments) {
    arguments.requireOperands({"FILE", "[NAME]"});
    unsigned const depth = depthOf(arguments, 2);
    za::Ast const ast = readModel(arguments.operands()[0]);
    std::vector<ModelElement> roots = ast.getModel().getTopLevelElements();
    if (arguments.operands().size() == 2)
        roots = subjects(
            ast, arguments.operands()[1], [](ModelElement const&) { return true; }, "contents");
    Section section;
    section.layout = Layout::Tree;
    Tree tree(section, depth, arguments.has("--all"));
    for (ModelElement const& root : roots)
        if (!root.isProxy()) tree.add(root);
    return printAnswer(arguments, "tree", {section});
}

} // namespace zelkor::command
