// Single operations of the library, to see where a workload's time goes. No marks hang on these.
#include <benchmark/benchmark.h>
#include <zelkor/ast.hpp>

#include <string>
#include <vector>

namespace {

namespace za = zelkor::ast;

/// A scope with `count` functions, made in one transaction.
struct Functions {
    za::Ast ast;
    za::Scope scope;
    std::vector<za::Function> all;

    explicit Functions(unsigned count) {
        auto transaction = ast.getModel().beginTransaction();
        scope = za::Scope::create(ast.getModel());
        for (unsigned at = 0; at < count; ++at) {
            za::Function::Builder builder(ast.getModel());
            builder.setName("function" + std::to_string(at));
            all.push_back(za::Function::cast(scope.createIntoSymbols(builder)));
        }
        transaction.commit();
    }
};

constexpr unsigned many = 1000;

void createInTransaction(benchmark::State& state) {
    for (auto unused : state) {
        static_cast<void>(unused);
        Functions const functions(many);
        benchmark::DoNotOptimize(functions.all.back());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * many);
}
BENCHMARK(createInTransaction);

void createWithParameter(benchmark::State& state) {
    Functions const functions(1);
    auto const model = functions.scope.getModel();
    for (auto unused : state) {
        static_cast<void>(unused);
        za::Function::Builder builder(model);
        builder.setName("function");
        auto parameter = std::make_unique<za::Variable::Builder>();
        parameter->setName("parameter");
        builder.addParams(std::move(parameter));
        builder.create().destroy();
    }
}
BENCHMARK(createWithParameter);

void setNameInOpenTransaction(benchmark::State& state) {
    Functions const functions(many);
    auto transaction = functions.scope.getModel().beginTransaction();
    std::string const names[] = {"first name", "other name"};
    std::size_t at = 0;
    for (auto unused : state) {
        static_cast<void>(unused);
        functions.all[at % many].setName(names[at / many % 2]);
        ++at;
    }
}
BENCHMARK(setNameInOpenTransaction);

void setNameAlone(benchmark::State& state) {
    Functions const functions(many);
    std::string const names[] = {"first name", "other name"};
    std::size_t at = 0;
    for (auto unused : state) {
        static_cast<void>(unused);
        functions.all[at % many].setName(names[at / many % 2]);
        ++at;
    }
}
BENCHMARK(setNameAlone);

void getName(benchmark::State& state) {
    Functions const functions(many);
    std::size_t at = 0;
    for (auto unused : state) {
        static_cast<void>(unused);
        benchmark::DoNotOptimize(functions.all[at++ % many].getName().size());
    }
}
BENCHMARK(getName);

void iterateSymbols(benchmark::State& state) {
    Functions const functions(many);
    for (auto unused : state) {
        static_cast<void>(unused);
        for (auto const symbol : functions.scope.getSymbols())
            benchmark::DoNotOptimize(symbol.getName().size());
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * many);
}
BENCHMARK(iterateSymbols);

void castSymbol(benchmark::State& state) {
    Functions const functions(1);
    za::Symbol const symbol = functions.all.front();
    for (auto unused : state) {
        static_cast<void>(unused);
        benchmark::DoNotOptimize(za::Function::cast(symbol));
    }
}
BENCHMARK(castSymbol);

void addAndRemove(benchmark::State& state) {
    Functions const functions(many);
    auto transaction = functions.scope.getModel().beginTransaction();
    auto& symbols = functions.scope.getSymbolsMutable();
    std::size_t at = 0;
    for (auto unused : state) {
        static_cast<void>(unused);
        za::Function const& moved = functions.all[at++ % many];
        symbols.remove(moved);
        symbols.add(moved);
    }
}
BENCHMARK(addAndRemove);

} // namespace

BENCHMARK_MAIN();
