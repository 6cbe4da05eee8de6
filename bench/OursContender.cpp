#include "Changes.hpp"
#include "Contenders.hpp"
#include "OursBuilder.hpp"
#include "OursNames.hpp"
#include "OursQueries.hpp"
#include "OursScript.hpp"
#include "OursSearch.hpp"
#include "OursVisitors.hpp"

#include <brant/zero/Slab.hpp>
#include <cstring>
#include <filesystem>
#include <optional>
#include <zelkor/ast/io.hpp>

namespace zelkor::bench {

namespace {

using za::io::IoFormat;

/// Elements lie in the library's own slabs: fills that many and keeps them when they are empty again.
void warmSlabs(std::size_t bytes) {
    namespace slab = brant::zero::slab;
    constexpr std::size_t blockSize = 256;
    slab::setRetention(4 * bytes);
    std::vector<void*> blocks(bytes / blockSize);
    for (void*& block : blocks)
        std::memset(block = slab::allocate(blockSize), 1, blockSize);
    for (void* const block : blocks)
        slab::deallocate(block, blockSize);
}

void build(Stage const& stage, za::Ast& ast) {
    auto transaction = ast.getModel().beginTransaction();
    OursBuilder builder(ast.getModel());
    stage.plan.replay(builder);
    transaction.commit();
}

za::Project projectOf(za::Ast const& ast) {
    return za::Project::cast(ast.getModel().getTopLevelElements().front());
}

void expectWhole(Stage const& stage, za::Ast& ast) {
    OursVisitor visitor;
    visitor.visit(projectOf(ast));
    stage.expectSums(visitor.sums);
}

void create(Stage& stage) {
    std::optional<za::Ast> ast;
    stage.measure([&] { build(stage, ast.emplace()); });
    expectWhole(stage, *ast);
    auto const violation = ast->getModel().verify();
    stage.expect(!violation,
                 "the model is wrong: " + (violation ? violation->rule + " " + violation->detail : ""));
}

void walk(Stage& stage) {
    za::Ast ast;
    build(stage, ast);
    auto const project = projectOf(ast);
    OursVisitor visitor;
    stage.measure([&] { visitor.visit(project); });
    stage.expectSums(visitor.sums);
}

void walkReflective(Stage& stage) {
    za::Ast ast;
    build(stage, ast);
    auto const project = projectOf(ast);
    OursReflectiveVisitor visitor;
    stage.measure([&] { visitor.visit(*project.get()); });
    visitor.sums.places = stage.settings.sums.places; // among the numbers
    stage.expectSums(visitor.sums);
    stage.expect(visitor.numbers > stage.settings.sums.places, "numbers were not read");
}

/// One of the ways to ask the same question.
template <auto ask>
void onModel(Stage& stage) {
    za::Ast ast;
    build(stage, ast);
    ask(stage, projectOf(ast));
}

template <IoFormat format>
std::string documentPath(Stage const& stage) {
    return format == IoFormat::json ? stage.jsonPath() : stage.xmlPath();
}

template <IoFormat format>
void save(Stage& stage) {
    za::Ast ast;
    build(stage, ast);
    std::string text;
    stage.measure([&] { text = za::io::serializeToUTF8String(ast, format); });
    stage.tellSize(text);
    auto const wanted = std::filesystem::file_size(documentPath<format>(stage));
    stage.expect(text.size() == wanted, "document of " + std::to_string(text.size()) +
                                            " bytes, the floor's has " + std::to_string(wanted));
}

template <IoFormat format>
void load(Stage& stage) {
    std::string const text = stage.readDocument(documentPath<format>(stage));
    std::optional<za::Ast> ast;
    stage.measure([&] { ast = za::io::deserializeFromUTF8String(text, format); });
    expectWhole(stage, *ast);
    stage.expect(za::io::serializeToUTF8String(*ast, format) == text,
                 "the loaded model does not write what it read");
}

/// Loads from the file, so that the text is no part of the memory measured.
template <IoFormat format>
std::optional<za::Ast> loadFile(Stage const& stage) {
    std::string const path = documentPath<format>(stage);
    return za::io::deserializeFromFile(std::u16string(path.begin(), path.end()), format);
}

template <IoFormat format>
void loadedMemory(Stage& stage) {
    std::optional<za::Ast> ast;
    stage.measureMemory([&] { ast = loadFile<format>(stage); });
    expectWhole(stage, *ast);
}

template <IoFormat format>
void loadPeak(Stage& stage) {
    std::optional<za::Ast> ast;
    stage.measurePeak([&] { ast = loadFile<format>(stage); });
    expectWhole(stage, *ast);
}

void memory(Stage& stage) {
    std::optional<za::Ast> ast;
    stage.measureMemory([&] { build(stage, ast.emplace()); });
    expectWhole(stage, *ast);
}

void destroy(Stage& stage) {
    std::optional<za::Ast> ast;
    build(stage, ast.emplace());
    stage.measure([&] { ast.reset(); });
}

/// Everything that has a name or a line to change.
struct Targets {
    std::vector<za::Symbol> symbols;
    std::vector<za::source::SourcePosition> positions;

    void collect(za::Symbol const& symbol) {
        symbols.push_back(symbol);
        if (auto const position = symbol.getDefPos()) positions.push_back(position);
        for (auto const position : symbol.getDeclPos())
            positions.push_back(position);
        if (auto const function = za::Function::cast(symbol)) {
            if (auto const body = function.getScope()) collect(body);
            for (auto const param : function.getParams())
                collect(param);
        } else if (auto const record = za::types::StructType::cast(symbol)) {
            for (auto const member : record.getMembers())
                collect(member);
            for (auto const method : record.getMethods())
                collect(method);
        }
    }
    void collect(za::Scope const& scope) {
        for (auto const space : scope.getNamespaces())
            collect(space);
        for (auto const symbol : scope.getSymbols())
            collect(symbol);
    }
    explicit Targets(za::Ast const& ast) {
        for (auto const unit : projectOf(ast).getCompilations())
            collect(unit);
    }
    void change(Stage const& stage) const {
        changeAll(
            stage.plan.seed(), stage.settings.changes, symbols.size(), positions.size(),
            [this](std::size_t at, std::string name) { symbols[at].setName(std::move(name)); },
            [this](std::size_t at, unsigned line) { positions[at].setLine(line); });
    }
};

void change(Stage& stage) {
    za::Ast ast;
    build(stage, ast);
    Targets const targets(ast);
    stage.countUnits(stage.settings.changes);
    stage.measure([&] {
        auto transaction = ast.getModel().beginTransaction();
        targets.change(stage);
        transaction.commit();
    });
    OursVisitor visitor;
    visitor.visit(projectOf(ast));
    stage.expect(visitor.sums.places != stage.settings.sums.places, "nothing was changed");
}

void rollback(Stage& stage) {
    za::Ast ast;
    build(stage, ast);
    Targets const targets(ast);
    stage.countUnits(stage.settings.changes);
    auto transaction = ast.getModel().beginTransaction();
    targets.change(stage);
    stage.measure([&] { transaction.rollback(); });
    expectWhole(stage, ast);
}

} // namespace

Contender oursContender() {
    std::vector<Workload> workloads = nameWorkloads();
    std::vector<Workload> const own = {{"create", create},
                                       {"walk", walk},
                                       {"walk.reflective", walkReflective},
                                       {"query", onModel<query>},
                                       {"query.handles", onModel<queryByHandles>},
                                       {"query.bodies", onModel<queryByBodies>},
                                       {"find", onModel<find>},
                                       {"find.default", onModel<findByDefault>},
                                       {"find.signature", onModel<findBySignature>},
                                       {"find.nothing", onModel<findNothing>},
                                       {"json.save", save<IoFormat::json>},
                                       {"json.load", load<IoFormat::json>},
                                       {"xml.save", save<IoFormat::xml>},
                                       {"xml.load", load<IoFormat::xml>},
                                       {"change", change},
                                       {"rollback", rollback},
                                       {"destroy", destroy},
                                       {"memory", memory},
                                       {"json.memory", loadedMemory<IoFormat::json>},
                                       {"json.peak", loadPeak<IoFormat::json>},
                                       {"xml.memory", loadedMemory<IoFormat::xml>},
                                       {"xml.peak", loadPeak<IoFormat::xml>}};
    workloads.insert(workloads.begin(), own.begin(), own.end());
    std::vector<Workload> const scripted = scriptWorkloads();
    workloads.insert(workloads.end(), scripted.begin(), scripted.end());
    return {"ours", workloads, warmSlabs};
}

} // namespace zelkor::bench
