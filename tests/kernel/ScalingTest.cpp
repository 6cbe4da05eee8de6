// Work grows with the number of elements, not with its square. Counted is what the library allocates: copies
// of old values, of collections and of records are what would make a step cost more the more there is.
// ZELKOR_SCALING=1 also prints the processor time of each run, for a person to read; nothing is asserted
// about time.

#include "model/ModelSupport.hpp"

#include "zelkor/ast.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iomanip>
#include <iostream>
#include <new>
#include <optional>
#include <random>

namespace {
std::atomic<std::size_t> allocatedBytes{0};
std::atomic<std::size_t> allocations{0};

void* counted(std::size_t size, std::nothrow_t const&) noexcept {
    allocatedBytes.fetch_add(size, std::memory_order_relaxed);
    allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}
void* counted(std::size_t size) {
    if (void* const memory = counted(size, std::nothrow)) return memory;
    throw std::bad_alloc();
}
} // namespace

// The counting replacements serve the library as well: they are found first.
void* operator new(std::size_t size) {
    return counted(size);
}
void* operator new[](std::size_t size) {
    return counted(size);
}
// Standard algorithms take their buffers without throwing and give them back as any other.
void* operator new(std::size_t size, std::nothrow_t const& tag) noexcept {
    return counted(size, tag);
}
void* operator new[](std::size_t size, std::nothrow_t const& tag) noexcept {
    return counted(size, tag);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

using namespace testmodel;
namespace za = zelkor::ast;

namespace {

/// A scope with n variables, and the order in which a scenario goes through them.
struct Field {
    Model model = newModel();
    za::Scope scope = za::Scope::create(model);
    za::Scope second = za::Scope::create(model);
    std::vector<za::Variable> variables;
    std::optional<Subscription> listener;

    void fill(std::size_t n) {
        Transaction level = model.beginTransaction();
        for (std::size_t i = 0; i < n; ++i) {
            variables.push_back(za::Variable::create(model));
            scope.getSymbolsMutable().add(variables.back());
        }
        level.commit();
    }
};

struct Scenario {
    std::string name;
    std::function<void(Field&, std::size_t)> prepare;
    std::function<void(Field&, std::size_t)> run;
};

void listen(Field& field) {
    field.listener = field.model.onCommit([](CommitNotice const& notice) {
        for (ElementChange const& change : notice.changed)
            if (change.properties().size() > 30) std::abort();
    });
}

auto each(void (*work)(Field&, za::Variable const&)) {
    return [work](Field& f, std::size_t) {
        for (za::Variable const& v : f.variables)
            work(f, v);
    };
}

std::vector<Scenario> scenarios() {
    std::vector<Scenario> all;
    for (bool const observed : {false, true}) {
        std::string const tail = observed ? ", observed" : "";
        auto const start = [observed](Field& f, std::size_t) {
            if (observed) listen(f);
        };
        auto const add = [](Field& f, std::size_t n) {
            for (std::size_t i = 0; i < n; ++i)
                f.scope.getSymbolsMutable().add(za::Variable::create(f.model));
        };
        auto const inOne = [](auto work, bool commit = true) {
            return [work, commit](Field& f, std::size_t n) {
                Transaction level = f.model.beginTransaction();
                work(f, n);
                if (commit) level.commit();
            };
        };
        all.push_back({"add, each alone" + tail, start, add});
        all.push_back({"add, one transaction" + tail, start, inOne(add)});
        all.push_back({"add, abandoned" + tail, start, inOne(add, false)});
        all.push_back({"create into" + tail, start, [](Field& f, std::size_t n) {
                           za::Variable::Builder builder;
                           for (std::size_t i = 0; i < n; ++i)
                               f.scope.createIntoSymbols(builder);
                       }});
        all.push_back({"add in front" + tail, start, inOne([](Field& f, std::size_t n) {
                           for (std::size_t i = 0; i < n; ++i)
                               f.scope.getSymbolsMutable().insert(0, za::Variable::create(f.model));
                       })});
        all.push_back({"values" + tail, start, inOne([](Field& f, std::size_t n) {
                           za::Variable const v = za::Variable::create(f.model);
                           for (std::size_t i = 0; i < n; ++i)
                               v.getCommentsMutable().push_back(u"c");
                       })});
        for (std::string const way : {" in order", " in reverse", " at random"}) {
            auto const full = [way, observed](Field& f, std::size_t n) {
                f.fill(n);
                if (way == " in reverse") std::reverse(f.variables.begin(), f.variables.end());
                if (way == " at random")
                    std::shuffle(f.variables.begin(), f.variables.end(), std::mt19937(7));
                if (observed) listen(f);
            };
            auto const destroy = each([](Field&, za::Variable const& v) { v.destroy(); });
            auto const move =
                each([](Field& f, za::Variable const& v) { f.second.getSymbolsMutable().add(v); });
            auto const leave = each([](Field&, za::Variable const& v) { v.setOwningScope({}); });
            all.push_back({"destroy" + way + tail, full, destroy});
            all.push_back({"destroy" + way + ", one transaction" + tail, full, inOne(destroy)});
            all.push_back({"destroy" + way + ", abandoned" + tail, full, inOne(destroy, false)});
            all.push_back({"move" + way + tail, full, move});
            all.push_back({"move" + way + ", one transaction" + tail, full, inOne(move)});
            all.push_back({"move" + way + ", abandoned" + tail, full, inOne(move, false)});
            all.push_back({"to the top level and back" + way + tail, full, [leave](Field& f, std::size_t n) {
                               leave(f, n);
                               for (za::Variable const& v : f.variables)
                                   v.setOwningScope(f.scope);
                           }});
        }
        all.push_back({"clear" + tail,
                       [observed](Field& f, std::size_t n) {
                           f.fill(n);
                           if (observed) listen(f);
                       },
                       [](Field& f, std::size_t) { f.scope.getSymbolsMutable().clear(); }});
    }
    return all;
}

struct Work {
    std::size_t bytes;
    std::size_t calls;
    double seconds;
};

Work measure(Scenario const& scenario, std::size_t n) {
    Field field;
    scenario.prepare(field, n);
    std::size_t const bytes = allocatedBytes;
    std::size_t const calls = allocations;
    std::clock_t const start = std::clock();
    scenario.run(field, n);
    Work const work{allocatedBytes - bytes, allocations - calls,
                    double(std::clock() - start) / CLOCKS_PER_SEC};
    EXPECT_EQ(violationOf(field.model), "") << scenario.name;
    return work;
}

} // namespace

TEST(Scaling, DoublingTheElementsDoublesTheWork) {
    bool const print = std::getenv("ZELKOR_SCALING") != nullptr;
    std::vector<std::size_t> const sizes =
        print ? std::vector<std::size_t>{50000, 100000, 200000} : std::vector<std::size_t>{2000, 4000};
    std::size_t checked = 0;
    for (Scenario const& scenario : scenarios()) {
        std::optional<Work> before;
        if (print) std::cout << std::left << std::setw(52) << scenario.name;
        for (std::size_t const n : sizes) {
            Work const work = measure(scenario, n);
            if (print)
                std::cout << "  " << std::fixed << std::setprecision(0) << work.seconds * 1e9 / double(n)
                          << " ns";
            if (before) {
                // What is small may round up to the next power of two.
                EXPECT_LE(double(work.bytes), 2.6 * double(before->bytes) + 65536)
                    << scenario.name << ", " << n;
                EXPECT_LE(double(work.calls), 2.6 * double(before->calls) + 64) << scenario.name << ", " << n;
                ++checked;
            }
            before = work;
        }
        if (print) std::cout << std::endl;
    }
    EXPECT_GT(allocations.load(), 0u);
    EXPECT_GT(checked, 40u);
}
