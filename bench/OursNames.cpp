#include "OursNames.hpp"

#include "OursBuilder.hpp"

namespace zelkor::bench {

namespace {

using Body = brant::zero::ModelElementImpl;

constexpr std::size_t mostTypes = 100000;

/// A built model and what of it is printed.
struct Printed {
    za::Ast ast;
    std::vector<za::types::Type> types; ///< at most `mostTypes`
    std::vector<za::Symbol> symbols;
    std::vector<za::Function> functions;

    explicit Printed(Stage const& stage) {
        auto transaction = ast.getModel().beginTransaction();
        OursBuilder builder(ast.getModel());
        stage.plan.replay(builder);
        transaction.commit();
        ast.getModel().forEachElement([this](Body const& element) {
            za::Symbol const symbol = za::Symbol::cast(element.This());
            if (!symbol) return;
            symbols.push_back(symbol);
            if (auto const type = za::types::Type::cast(symbol); type && types.size() < mostTypes)
                types.push_back(type);
            if (auto const function = za::Function::cast(symbol)) functions.push_back(function);
        });
    }
};

template <class T>
Body const* bodyOf(T const& handle) {
    return handle.get();
}

/// The layers of a type, down to the innermost.
std::size_t depthOf(Body const* type) {
    std::size_t depth = 0;
    for (; type != nullptr; ++depth) {
        if (!type->classTable().conformsTo(za::types::BasedType::Impl::table)) return depth + 1;
        type = static_cast<za::types::BasedType::Impl const*>(type)->getTypeBody();
    }
    return depth;
}

/// The owners of a symbol, up to the unit.
std::size_t ownersOf(Body const* element) {
    std::size_t owners = 0;
    for (; element != nullptr; element = element->containerBody())
        ++owners;
    return owners;
}

/// Calls `work` for each and checks that it came to something each time.
template <class T, class Work>
void measureEach(Stage& stage, std::vector<T> const& elements, Work const& work) {
    std::size_t least = ~std::size_t{0};
    stage.countUnits(elements.size());
    stage.measure([&] {
        for (T const& element : elements)
            least = std::min(least, work(element));
    });
    stage.expect(!elements.empty() && least > 0, "an element came to nothing");
}

void printTypes(Stage& stage) {
    Printed const model(stage);
    measureEach(stage, model.types, [](za::types::Type const& type) {
        return za::types::Type::generateTypeName(type, "x", false).size();
    });
}

void walkTypes(Stage& stage) {
    Printed const model(stage);
    measureEach(stage, model.types, [](za::types::Type const& type) { return depthOf(bodyOf(type)); });
}

void printNames(Stage& stage) {
    Printed const model(stage);
    measureEach(stage, model.symbols,
                [](za::Symbol const& symbol) { return symbol.getFullyQualifiedName().size(); });
}

void walkNames(Stage& stage) {
    Printed const model(stage);
    measureEach(stage, model.symbols, [](za::Symbol const& symbol) { return ownersOf(bodyOf(symbol)); });
}

void printSignatures(Stage& stage) {
    Printed const model(stage);
    measureEach(stage, model.functions,
                [](za::Function const& function) { return function.generateSignature().size(); });
}

} // namespace

std::vector<Workload> nameWorkloads() {
    return {{"types.print", printTypes},
            {"types.walk", walkTypes},
            {"names.print", printNames},
            {"names.walk", walkNames},
            {"signatures.print", printSignatures}};
}

} // namespace zelkor::bench
