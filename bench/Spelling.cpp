// The library's spelling of the functions of real code beside the front end's own spelling of the same ones:
//   bench_spelling BUILD_DIR [ROUNDS]
// takes a compile database, such as one of scripts/corpus.sh.
#include "FrontEnd.hpp"
#include "Producer.hpp"
#include "UnitParser.hpp"

#include <zelkor/ast.hpp>
#include <zelkor/ast/query.hpp>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <set>
#include <vector>

namespace {

namespace za = zelkor::ast;
namespace zp = zelkor::producer;

/// The parsed units, and each function of the project once.
struct FrontEnd {
    zp::ClangIndex index{clang_createIndex(0, 0)};
    std::vector<zp::ClangUnit> units;
    std::vector<CXCursor> functions;
    std::set<std::string> known;

    void parse(zp::CompileCommand const& command, std::string const& resources) {
        zp::ClangUnit unit = zp::parseAlone(index.get(), command, resources, CXTranslationUnit_KeepGoing);
        if (!unit) return;
        collect(clang_getTranslationUnitCursor(unit.get()));
        units.push_back(std::move(unit));
    }

    void collect(CXCursor parent) {
        zp::visitChildren(parent, [this](CXCursor cursor) {
            if (clang_Location_isInSystemHeader(clang_getCursorLocation(cursor)) != 0)
                return CXChildVisit_Continue;
            CXCursorKind const kind = clang_getCursorKind(cursor);
            bool const isFunction = kind == CXCursor_FunctionDecl || kind == CXCursor_CXXMethod ||
                                    kind == CXCursor_Constructor || kind == CXCursor_Destructor;
            if (isFunction && known.insert(zp::toText(clang_getCursorUSR(cursor))).second)
                functions.push_back(cursor);
            return isFunction ? CXChildVisit_Continue : CXChildVisit_Recurse;
        });
    }
};

/// \returns nanoseconds for each of `count` texts: the best of the rounds.
template <class Spell>
double timePerText(int rounds, std::size_t count, Spell spell) {
    double best = 0;
    std::size_t bytes = 0;
    for (int round = 0; round < rounds; ++round) {
        auto const begin = std::chrono::steady_clock::now();
        bytes += spell();
        std::chrono::duration<double, std::nano> const taken = std::chrono::steady_clock::now() - begin;
        double const each = taken.count() / static_cast<double>(count);
        best = round == 0 ? each : std::min(best, each);
    }
    if (bytes == 0) throw std::runtime_error("nothing was spelled");
    return best;
}

int run(std::string const& database, int rounds) {
    za::Ast ast;
    zp::ImportOptions options;
    options.database = database;
    zp::importProject(ast, options);
    std::vector<za::Function> ours;
    for (za::Function const& function :
         za::query<za::Function>(ast.getModel()).where(!za::Function::defPos().isNull()))
        ours.push_back(function);

    FrontEnd frontEnd;
    std::string const resources = zp::findResourceDirectory({});
    for (zp::CompileCommand const& command : zp::readCompileDatabase(database))
        frontEnd.parse(command, resources);
    if (ours.empty() || frontEnd.functions.empty()) throw std::runtime_error("there are no functions in it");

    double const signatures = timePerText(rounds, ours.size(), [&] {
        std::size_t bytes = 0;
        for (za::Function const& function : ours)
            bytes += function.generateSignature().size();
        return bytes;
    });
    double const spelled = timePerText(rounds, frontEnd.functions.size(), [&] {
        std::size_t bytes = 0;
        for (CXCursor const& cursor : frontEnd.functions) {
            CXPrintingPolicy const policy = clang_getCursorPrintingPolicy(cursor);
            clang_PrintingPolicy_setProperty(policy, CXPrintingPolicy_TerseOutput, 1);
            clang_PrintingPolicy_setProperty(policy, CXPrintingPolicy_FullyQualifiedName, 1);
            bytes += zp::toText(clang_getCursorPrettyPrinted(cursor, policy)).size();
            clang_PrintingPolicy_dispose(policy);
        }
        return bytes;
    });
    std::cout << "a signature of " << ours.size() << " functions: " << signatures
              << " ns; the front end's of " << frontEnd.functions.size() << ": " << spelled << " ns; ratio "
              << signatures / spelled << '\n';
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::cerr << "usage: bench_spelling BUILD_DIR [ROUNDS]\n";
        return 2;
    }
    try {
        return run(arguments[1], count > 2 ? std::max(1, std::atoi(arguments[2])) : 9);
    } catch (std::exception const& error) {
        std::cerr << "bench_spelling: " << error.what() << '\n';
        return 1;
    }
}
