#include "OursQueries.hpp"

#include <brant/zero/Bodies.hpp>
#include <zelkor/ast.hpp>
#include <zelkor/ast/query.hpp>

namespace zelkor::bench {

namespace {

using brant::zero::Bodies;
using brant::zero::isA;
namespace zt = za::types;

auto wanted(za::Project const& project) {
    return za::query<za::Function>(project).where(
        za::Function::isInline() == true &&
        za::Function::params().any(za::Variable::type().is<zt::PointerType>()));
}

/// As a user writes it: typed handles all the way.
struct HandleLoop {
    std::size_t found = 0;

    void visit(za::Function const& function) {
        if (function.getIsInline()) {
            for (auto const param : function.getParams()) {
                if (!zt::PointerType::cast(param.getType())) continue;
                ++found;
                break;
            }
        }
        if (auto const body = function.getScope()) visit(body);
    }
    void visit(za::Scope const& scope) {
        for (auto const space : scope.getNamespaces())
            visit(space);
        for (auto const symbol : scope.getSymbols()) {
            if (auto const function = za::Function::cast(symbol)) {
                visit(function);
            } else if (auto const record = zt::StructType::cast(symbol)) {
                if (auto const inner = record.getScope()) visit(inner);
                for (auto const method : record.getMethods())
                    visit(method);
            }
        }
    }
    void visit(za::Project const& project) {
        for (auto const unit : project.getCompilations())
            visit(unit);
    }
};

/// The least that such a loop can cost: bodies, nothing counted, nothing checked.
struct BodyLoop {
    std::size_t found = 0;

    void visit(za::Function::Impl const& function) {
        if (function.getIsInline()) {
            for (za::Variable::Impl const& param : Bodies(function.getParams())) {
                auto const* const type = param.getTypeBody();
                if (type == nullptr || !isA<zt::PointerType>(*type)) continue;
                ++found;
                break;
            }
        }
        if (auto const* const body = function.getScopeBody())
            visit(static_cast<za::Scope::Impl const&>(*body));
    }
    void visit(za::Scope::Impl const& scope) {
        for (za::Scope::Impl const& space : Bodies(scope.getNamespaces()))
            visit(space);
        for (za::Symbol::Impl const& symbol : Bodies(scope.getSymbols())) {
            if (isA<za::Function>(symbol)) {
                visit(static_cast<za::Function::Impl const&>(symbol));
            } else if (isA<zt::StructType>(symbol)) {
                auto const& record = static_cast<zt::StructType::Impl const&>(symbol);
                if (auto const* const inner = record.getScopeBody())
                    visit(static_cast<za::Scope::Impl const&>(*inner));
                for (zt::Method::Impl const& method : Bodies(record.getMethods()))
                    visit(method);
            }
        }
    }
    void visit(za::Project const& project) {
        for (za::source::CompilationUnit::Impl const& unit : Bodies(project.getCompilations()))
            visit(unit);
    }
};

template <class Loop>
std::size_t countBy(za::Project const& project) {
    Loop loop;
    loop.visit(project);
    return loop.found;
}

void expectSame(Stage const& stage, std::size_t found, std::size_t other) {
    stage.expect(found == other && found > 0,
                 "found " + std::to_string(found) + " functions, by another way " + std::to_string(other));
}

} // namespace

void query(Stage& stage, za::Project const& project) {
    std::size_t found = 0;
    (void)wanted(project).exists(); // plans the walk, once for a class
    stage.measure([&] { found = wanted(project).count(); });
    expectSame(stage, found, countBy<HandleLoop>(project));
}

void queryByHandles(Stage& stage, za::Project const& project) {
    std::size_t found = 0;
    stage.measure([&] { found = countBy<HandleLoop>(project); });
    expectSame(stage, found, countBy<BodyLoop>(project));
}

void queryByBodies(Stage& stage, za::Project const& project) {
    std::size_t found = 0;
    stage.measure([&] { found = countBy<BodyLoop>(project); });
    expectSame(stage, found, wanted(project).count());
}

} // namespace zelkor::bench
