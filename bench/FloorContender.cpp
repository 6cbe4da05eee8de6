#include "Changes.hpp"
#include "Contenders.hpp"
#include "FloorTables.hpp"
#include "FloorWrite.hpp"
#include "Search.hpp"

#include <memory>

namespace zelkor::bench {

namespace {

using namespace floor;

template <bool tracks>
std::unique_ptr<Model<tracks>> build(Stage const& stage) {
    auto model = std::make_unique<Model<tracks>>();
    Builder<tracks> builder(*model, stage.plan.seed());
    stage.plan.replay(builder);
    return model;
}

template <bool tracks>
void create(Stage& stage) {
    std::unique_ptr<Model<tracks>> model;
    stage.measure([&] {
        model = build<tracks>(stage);
        model->created.clear(); // the commit
    });
    stage.expect(model->project->files.size() == stage.plan.count(Kind::SourceFile), "files are missing");
}

/// Visits by type: every element, its texts, places and references.
template <bool tracks>
void visit(typename Tree<tracks>::Node const& node, WalkSums& sums) {
    ++sums.elements;
    Tree<tracks>::withClass(node, [&sums](auto const& typed) {
        using T = std::remove_cvref_t<decltype(typed)>;
        forEachFeature<T>([&](auto const& feature) {
            auto const& value = typed.*(feature.member);
            if constexpr (formOf<decltype(feature)> == Form::Text)
                sums.textBytes += value.size();
            else if constexpr (formOf<decltype(feature)> == Form::Reference)
                sums.references += value ? 1 : 0;
            else if constexpr (formOf<decltype(feature)> == Form::References)
                sums.references += value.size();
            else if constexpr (formOf<decltype(feature)> == Form::Child) {
                if (value) visit<tracks>(*value, sums);
            } else if constexpr (formOf<decltype(feature)> == Form::Children) {
                for (auto const& contained : value)
                    visit<tracks>(*contained, sums);
            }
        });
        if constexpr (T::kind == Kind::SourcePosition) sums.places += typed.line + typed.col;
    });
}

template <bool tracks>
void walk(Stage& stage) {
    auto const model = build<tracks>(stage);
    WalkSums sums;
    stage.measure([&] { visit<tracks>(*model->project, sums); });
    stage.expectSums(sums);
}

/// Counts functions of a name below a scope by comparing the parts of the name, `prefix` being what is known
/// of it. \returns 0 for a scope that has another name, after the whole walk all the same.
template <bool tracks>
std::size_t countNamed(typename Tree<tracks>::Scope const& scope, std::string_view wanted,
                       std::size_t prefix) {
    using Types = Tree<tracks>;
    constexpr std::size_t off = std::string_view::npos;
    std::size_t found = 0;
    for (auto const& symbol : scope.symbols) {
        if (symbol->kind != Kind::Function || prefix == off || symbol->name.size() + prefix != wanted.size())
            continue;
        auto const& function = static_cast<typename Types::Function const&>(*symbol);
        found += wanted.ends_with(function.name) && function.templateArgs.empty();
    }
    for (auto const& inner : scope.namespaces) {
        std::string const& name = static_cast<typename Types::Namespace const&>(*inner).name;
        bool const fits = prefix != off && wanted.substr(prefix).starts_with(name) &&
                          wanted.substr(prefix + name.size()).starts_with("::");
        found += countNamed<tracks>(*inner, wanted, fits ? prefix + name.size() + 2 : off);
    }
    return found;
}

template <bool tracks>
void find(Stage& stage) {
    auto const model = build<tracks>(stage);
    measureSearch(stage, [&](std::string_view name) {
        std::size_t found = 0;
        for (auto const& unit : model->project->compilations)
            found += countNamed<tracks>(*unit, name, 0);
        return found;
    });
}

template <bool tracks>
void walkReflective(Stage& stage) {
    auto const model = build<tracks>(stage);
    FeatureSums<tracks> sums;
    stage.measure([&] {
        sums.open.push_back(model->project.get());
        while (!sums.open.empty()) {
            auto const* const node = sums.open.back();
            sums.open.pop_back();
            ++sums.elements;
            for (Row<tracks> const& row : tableOf<tracks>(node->kind).rows)
                row.read(*node, sums);
        }
    });
    stage.expectSums({sums.elements, sums.textBytes, stage.settings.sums.places, sums.references});
    stage.expect(sums.numbers > stage.settings.sums.places, "numbers were not read");
}

template <bool tracks>
void saveJson(Stage& stage) {
    auto const model = build<tracks>(stage);
    std::string text;
    stage.measure([&] { JsonWriter<tracks>(text).write(*model->project); });
    stage.expectDocument(text, stage.settings.json);
}

template <bool tracks>
void saveXml(Stage& stage) {
    auto const model = build<tracks>(stage);
    std::string text;
    stage.measure([&] { XmlWriter<tracks>(text).write(*model->project); });
    stage.expectDocument(text, stage.settings.xml);
}

template <bool tracks>
void destroy(Stage& stage) {
    auto model = build<tracks>(stage);
    stage.measure([&] { model.reset(); });
}

template <bool tracks>
void memory(Stage& stage) {
    std::unique_ptr<Model<tracks>> model;
    stage.measureMemory([&] {
        model = build<tracks>(stage);
        model->created = {};
    });
}

/// Old values by attribute, newest last.
template <bool tracks>
class ChangeLog {
  public:
    using Types = Tree<tracks>;

    void setName(typename Types::Symbol& symbol, std::string name) {
        std::swap(symbol.name, name);
        names.push_back({&symbol, std::move(name)});
    }
    void setLine(typename Types::Position& position, unsigned line) {
        lines.push_back({&position, std::exchange(position.line, line)});
    }
    void commit() {
        names.clear();
        lines.clear();
    }
    void rollBack() {
        for (auto at = names.rbegin(); at != names.rend(); ++at)
            at->first->name = std::move(at->second);
        for (auto at = lines.rbegin(); at != lines.rend(); ++at)
            at->first->line = at->second;
        commit();
    }

  private:
    std::vector<std::pair<typename Types::Symbol*, std::string>> names;
    std::vector<std::pair<typename Types::Position*, unsigned>> lines;
};

template <bool tracks>
struct Targets {
    std::vector<typename Tree<tracks>::Symbol*> symbols;
    std::vector<typename Tree<tracks>::Position*> positions;

    explicit Targets(Model<tracks> const& model) {
        FeatureSums<tracks> found;
        found.open.push_back(model.project.get());
        while (!found.open.empty()) {
            auto* const node = const_cast<typename Tree<tracks>::Node*>(found.open.back());
            found.open.pop_back();
            if (auto* const symbol = dynamic_cast<typename Tree<tracks>::Symbol*>(node))
                symbols.push_back(symbol);
            if (auto* const position = dynamic_cast<typename Tree<tracks>::Position*>(node))
                positions.push_back(position);
            for (Row<tracks> const& row : tableOf<tracks>(node->kind).rows)
                row.read(*node, found);
        }
    }
};

template <bool tracks>
void applyChanges(Stage const& stage, Targets<tracks> const& targets, ChangeLog<tracks>& log) {
    changeAll(
        stage.plan.seed(), stage.settings.changes, targets.symbols.size(), targets.positions.size(),
        [&](std::size_t at, std::string name) { log.setName(*targets.symbols[at], std::move(name)); },
        [&](std::size_t at, unsigned line) { log.setLine(*targets.positions[at], line); });
}

template <bool tracks>
void change(Stage& stage) {
    auto const model = build<tracks>(stage);
    Targets<tracks> const targets(*model);
    ChangeLog<tracks> log;
    stage.countUnits(stage.settings.changes);
    stage.measure([&] {
        applyChanges(stage, targets, log);
        log.commit();
    });
    WalkSums sums;
    visit<tracks>(*model->project, sums);
    stage.expect(sums.places != stage.settings.sums.places, "nothing was changed");
}

template <bool tracks>
void rollback(Stage& stage) {
    auto const model = build<tracks>(stage);
    Targets<tracks> const targets(*model);
    ChangeLog<tracks> log;
    applyChanges(stage, targets, log);
    stage.countUnits(stage.settings.changes);
    stage.measure([&] { log.rollBack(); });
    WalkSums sums;
    visit<tracks>(*model->project, sums);
    stage.expectSums(sums);
}

template <bool tracks>
std::vector<Workload> workloads() {
    return {{"create", create<tracks>},
            {"walk", walk<tracks>},
            {"walk.reflective", walkReflective<tracks>},
            {"find", find<tracks>},
            {"json.save", saveJson<tracks>},
            {"xml.save", saveXml<tracks>},
            {"destroy", destroy<tracks>},
            {"memory", memory<tracks>},
            {"change", change<tracks>},
            {"rollback", rollback<tracks>}};
}

} // namespace

Contender countedContender() {
    Contender contender{"counted", workloads<false>()};
    contender.workloads.push_back({"json.load", loadJsonToCounted});
    contender.workloads.push_back({"xml.load", loadXmlToCounted});
    return contender;
}

Contender trackedContender() {
    return {"tracked", workloads<true>()};
}

} // namespace zelkor::bench
