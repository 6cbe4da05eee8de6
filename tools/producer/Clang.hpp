// Thin help around the C interface of the front end: ownership of its strings and handles, and visiting with
// a callable.
#pragma once

#include <clang-c/CXCompilationDatabase.h>
#include <clang-c/Index.h>

#include <tsl/robin_map.h>
#include <tsl/robin_set.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace zelkor::producer {

inline std::string toText(CXString string) {
    char const* const bytes = clang_getCString(string);
    std::string text = bytes ? bytes : "";
    clang_disposeString(string);
    return text;
}

template <class Handle, void (*dispose)(Handle)>
struct ClangDeleter {
    using pointer = Handle;
    void operator()(Handle handle) const { dispose(handle); }
};

using ClangIndex = std::unique_ptr<void, ClangDeleter<CXIndex, clang_disposeIndex>>;
using ClangUnit =
    std::unique_ptr<CXTranslationUnit, ClangDeleter<CXTranslationUnit, clang_disposeTranslationUnit>>;
using ClangDatabase =
    std::unique_ptr<void, ClangDeleter<CXCompilationDatabase, clang_CompilationDatabase_dispose>>;
using ClangCommands = std::unique_ptr<void, ClangDeleter<CXCompileCommands, clang_CompileCommands_dispose>>;
using ClangDiagnostic = std::unique_ptr<void, ClangDeleter<CXDiagnostic, clang_disposeDiagnostic>>;

struct CursorHash {
    // The front end's hash has 32 bits, the low ones of which come from addresses.
    std::size_t operator()(CXCursor const& cursor) const {
        return (clang_hashCursor(cursor) * std::uint64_t{0x9E3779B97F4A7C15}) >> 32;
    }
};
struct CursorEqual {
    bool operator()(CXCursor const& a, CXCursor const& b) const { return clang_equalCursors(a, b) != 0; }
};

// Tables by cursor. What points into them is valid until something is added.
template <class Value>
using CursorMap = tsl::robin_map<CXCursor, Value, CursorHash, CursorEqual>;
using CursorSet = tsl::robin_set<CXCursor, CursorHash, CursorEqual>;

// The front end's own tests of kinds, without a call for each node.
inline bool isExpressionKind(CXCursorKind kind) {
    return kind >= CXCursor_FirstExpr && kind <= CXCursor_LastExpr;
}
inline bool isStatementKind(CXCursorKind kind) {
    return kind >= CXCursor_FirstStmt && kind <= CXCursor_LastStmt;
}

// Equality of cursors on one node. Those of expressions and statements also hold the declaration around them,
// which is not the same for each way that leads to them, and is wrong after a declaration inside of an
// expression.
inline bool isSameNode(CXCursor const& a, CXCursor const& b) {
    if (isExpressionKind(a.kind) || isStatementKind(a.kind))
        return a.kind == b.kind && a.data[1] == b.data[1];
    return clang_equalCursors(a, b) != 0;
}

// Calls `visit(cursor)` or `visit(cursor, parent)` for each child; it answers a CXChildVisitResult. An
// exception must not cross the front end's own frames, which are compiled without them, so it is carried
// around.
template <class Visit>
void visitChildren(CXCursor parent, Visit&& visit) {
    struct State {
        Visit& visit;
        std::exception_ptr failure;
    } state{visit, nullptr};
    clang_visitChildren(
        parent,
        [](CXCursor cursor, CXCursor parent, CXClientData data) {
            auto& state = *static_cast<State*>(data);
            try {
                if constexpr (std::is_invocable_v<Visit&, CXCursor, CXCursor>) {
                    return state.visit(cursor, parent);
                } else {
                    static_cast<void>(parent);
                    return state.visit(cursor);
                }
            } catch (...) {
                state.failure = std::current_exception();
                return CXChildVisit_Break;
            }
        },
        &state);
    if (state.failure) std::rethrow_exception(state.failure);
}

} // namespace zelkor::producer
