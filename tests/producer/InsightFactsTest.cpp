// What a body does to what it names: each row is a body and the uses that it must give.
#include "FactsSupport.hpp"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace zelkor::producer::test {
namespace {

std::map<Id, std::string> namesOf(UnitFacts const& facts) {
    std::map<Id, std::string> names;
    for (Entity const& entity : facts.entities) {
        names[entity.id] = entity.name;
        FunctionFacts const* const function = entity.as<FunctionFacts>();
        for (std::size_t i = 0; function && i < function->parameters.size(); ++i)
            names[makeId(entity.id, "parameter", i)] = function->parameters[i].name;
    }
    for (MacroFact const& macro : facts.macros)
        names[macro.id] = macro.name;
    return names;
}

// "calls f g; reads x; ...", in the order of first use.
std::string useText(UseFacts const& uses, std::map<Id, std::string> const& names) {
    static constexpr char const* words[] = {"calls", "reads", "writes", "address", "types", "macros"};
    std::string text;
    auto const nameOf = [&](Id const& id) {
        auto const found = names.find(id);
        return found == names.end() ? std::string("?") : found->second;
    };
    for (std::size_t kind = 0; kind < useKindCount; ++kind) {
        if (uses.lists[kind].empty()) continue;
        text += (text.empty() ? "" : "; ") + std::string(words[kind]);
        for (Id const& id : uses.lists[kind])
            text += ' ' + nameOf(id);
    }
    for (PointerFact const& fact : uses.pointers)
        text += (text.empty() ? "" : "; ") + nameOf(fact.pointer) + " -> " + nameOf(fact.target);
    return text + (uses.hasAssembler ? "; asm" : "");
}

struct Row {
    char const* body;
    char const* uses;
};

// Each row becomes a function r0, r1, ... in one unit.
void check(char const* file, std::string text, std::vector<Row> const& rows) {
    TemporaryDirectory const directory;
    for (std::size_t i = 0; i < rows.size(); ++i)
        text += "void r" + std::to_string(i) + "(int n, int* p) {" + rows[i].body + "}\n";
    directory.write(file, text);
    UnitFacts const facts = parse(file, {"-w"}, directory.path());
    for (Diagnostic const& diagnostic : facts.diagnostics)
        EXPECT_LT(diagnostic.severity, Severity::Error) << diagnostic.line << ": " << diagnostic.text;
    std::map<Id, std::string> const names = namesOf(facts);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::string const name = std::string(1, 'r').append(std::to_string(i));
        std::string seen;
        for (UseFacts const& uses : facts.uses) {
            auto const owner = names.find(uses.owner);
            if (owner != names.end() && owner->second == name) seen = useText(uses, names);
        }
        EXPECT_EQ(seen, rows[i].uses) << rows[i].body;
    }
}

TEST(InsightFacts, WhatCDoes) {
    check(
        "unit.c",
        "typedef struct S { int f; int a[3]; int (*fn)(int); struct { int d; } in; } S;\n"
        "int x, y, arr[4], grid[2][2]; int g(int); int h(int*, ...); int* give(void); enum E { One = 1 };\n"
        "S s, *q;\n"
        "#define ADD(v) (x += g(v))\n"
        "#define LIMIT 10\n",
        {
            {"x = y;", "reads y; writes x"},
            {"x += y;", "reads x y; writes x"},
            {"x++; --y;", "reads x y; writes x y"},
            {"x = y = n;", "reads n; writes x y"},
            {"n = x ? y : arr[1];", "reads x y arr; writes n"},
            {"x, y;", "reads x y"},
            {"(void)x; sizeof x; sizeof(int[n]); _Alignof(S);", "types S"},
            {"__typeof__(g(x)) z = 1; z = 2;", "writes z"},
            {"*p = 1; p[n] = 2; *(p + 1) = 3;", "reads p n"},
            {"arr[n] = 1; grid[1][n] += 2; *arr = 3;", "reads n grid; writes arr grid"},
            {"p = arr; p = &x; p = grid[1]; p = &arr[2];",
             "writes p; address arr x grid; p -> arr; p -> x; p -> grid"},
            {"h(&x, arr, &s.f, s.a);", "calls h; address x arr f s a"},
            {"s.f = 1; s.in.d++; s.a[n] = y;", "reads d in s n y; writes f s d in a"},
            {"q->f = 1; q->in.d = 2; n = q->a[1]; n = s.f;", "reads q a f s; writes f d in n"},
            {"q = &s; s = *q;", "reads q; writes q s; address s; q -> s"},
            {"((int (*)(int*))h)(&x); ((void (*)(int, int*))p)(y, &n);", "calls h; reads p y; address x n"},
            {"g(x); (g)(y); (*g)(n); (&g)(1);", "calls g; reads x y n"},
            {"n = s.fn(x); q->fn(2);", "reads fn s x q; writes n"},
            {"s.fn = g; q->fn = n ? &g : 0; h(0, g);", "calls h; reads q n; writes fn s; address g; fn -> g"},
            {"ADD(LIMIT);", "calls g; reads x; writes x; macros ADD LIMIT"},
            {"S t = {.f = n, .fn = g}; S u = {1};", "reads n; writes f fn; address g; types S; fn -> g"},
            {"int v[n]; v[0] = One;", "reads n; writes v; types E"},
            {"__builtin_offsetof(S, f); n = (int)y;", "reads y; writes n; types S"},
            {"__asm__(\"\" : \"=r\"(x) : \"r\"(y));", "reads x y; writes x; asm"},
            {"*give() = 1; give()[1] = x;", "calls give; reads x"},
            {"static int k; k = n; { int k; k = 1; }", "reads n; writes k k"},
            {"for (int i = x; i < n; i++) if (i) return; else while (y) switch (p[0]) case 1: goto e; e:;",
             "reads x i n y p; writes i"},
            {"_Generic(x, int: g(y), default: 0); ({ n = x; });", "calls g; reads y x; writes n"},
            {"const int c = x; (void)c; int const* d = &c;", "reads x; address c; d -> c"},
        });
}

TEST(InsightFacts, WhatCxxDoes) {
    check("unit.cpp",
          "struct D { D(); D(int); D(D const&); ~D(); int look() const; void set(int); static int st(); int "
          "z;\n"
          "  D& operator=(D const&); D& operator+=(int); D operator+(D const&) const; D& operator++();\n"
          "  operator bool() const; int operator[](int) const; int& at(int); int& operator()(int); };\n"
          "struct S { int f; D d; static int shared; virtual void run(); };\n"
          "struct T : S { int& r; D e; T(int& x, int y) : S(), r(x), e(y) {} void run() override; };\n"
          "int x, y, arr[3]; int g(int); int g(long); void ref(int&); void cref(int const&); void "
          "move(int&&);\n"
          "template <class U> U twice(U u) { U w = g(u); return w; }\n"
          "template <class U> struct Box { U v; Box(U u) : v(u) {} U get() { g(v); return v; } };\n"
          "namespace std { template <class U> U&& move(U& u) { return static_cast<U&&>(u); } }\n"
          "void take(D), rtake(D&&); S s, *q;\n",
          {
              {"ref(x); cref(y); move(3);", "calls ref cref move; reads y; address x"},
              {"int& a = x; int const& b = y; a = b;", "reads y b; writes a; address x; a -> x"},
              {"D d; d.set(n); n = d.look() + D::st() + d.st();",
               "calls ~D D set look st; reads d n; writes n; address d; types D"},
              {"D a, b = a, c(1); a = b; a += x; ++a; b + a;",
               "calls ~D D D D operator= operator+= operator++ operator+; reads a b x; writes a; types D"},
              {"if (s.d) x = s.d[y];", "calls operator bool operator[]; reads d s y; writes x"},
              {"s.d.at(1) = 2; s.d(3) = 4;", "calls at operator(); reads d s; address d s"},
              {"s.f = 1; S::shared = s.shared; q->run(); delete q;",
               "calls run; reads shared q; writes f s shared; types S"},
              {"new D(n); D* e = new D[2]; delete e; delete[] e;", "calls D D ~D; reads n e; types D"},
              {"take(D()); D d; take(d); rtake(std::move(d)); d = std::move(d);",
               "calls take D ~D D rtake move operator=; reads d; writes d; address d; types D"},
              {"for (auto& e : arr) e = 1; for (int e : arr) n = e; for (int const& e : arr);",
               "reads arr e; writes e n; address arr"},
              {"auto l = [n, &p, k = x](int a) { return n + *p + a + y; }; l(1);",
               "calls operator(); reads n x l"},
              {"twice(n); Box<long> b(2); b.get();", "calls twice Box get; reads n b; address b; types Box"},
              {"int S::* m = &S::f; s.*m = 1; q->*m = 2;", "reads m q; writes s; address f; types S; m -> f"},
              {"struct L { int k; int run() { return k + g(1); } } l; l.run();",
               "calls L run; reads l; address l"},
              {"typedef int I; I i = static_cast<I>(n); decltype(g(i)) j = noexcept(g(x)); (void)j;",
               "reads n; types I"},
              {"try { throw D(1); } catch (D& e) { e.z = n; }", "calls D; reads n; writes z e; types D"},
              {"auto [a] = S{}.d; n = a;", "calls D S; reads d; writes n; types S"},
              {"void (*fp)(int&) = ref; fp(x); fp = &ref; (*fp)(y);",
               "reads fp; writes fp; address ref x y; fp -> ref"},
              {"T t(x, y); S& b = t; b.run();", "calls T run; reads y b; address x t b; types T S; b -> t"},
          });
}

// Bodies other than those of functions, and functions other than those that the text names.
TEST(InsightFacts, WhoUses) {
    TemporaryDirectory const directory;
    directory.write("unit.cpp", R"(
int g(int); int g(long); void fill(); int value; int other;
int global = g(1);
int* pointer = &value;
struct N { int q = g(value); N(); };
N::N() {}
int optional(int a = g(other));
template <class U> U twice(U u) { U w = g(u); static int count; auto l = [&](U z) { return g(z) + w; }; return l(w); }
template <class U> struct Box { U v; Box(U u) : v(u) {} U get() { g(v); return v; } U never() { return g(v); } };
long both(Box<long>& b) { return twice(1) + twice(2L) + b.get() + optional(); }
void closures() {
    auto outer = [](int a) { auto inner = [a] { return g(a); }; return inner(); };
    auto generic = [](auto a) { return g(a); };
    outer(1); generic(2L);
}
struct A { virtual ~A(); virtual int f(); };
struct B : A { int f() override; ~B() override; };
template <class F> void hand(F); template <class V> void only(V v) { value = v; }
template <class V> void visits(V v) { hand([](auto) { only<V>(V()); }); }
void start() { visits(1); }
#define CALL(x) g(x)
struct L { int m() { return CALL(value); } };
template <class U> void builds() { U(&value, fill); }
template <class U> constexpr int one(U) { return 1; }
template <class U> constexpr bool big() { return one(U()) > 0; }
template <bool> struct If {};
template <class U> void asks() { using R = If<big<U>()>; static_assert(big<U*>()); }
void answers() { asks<int>(); }
)");
    UnitFacts const facts = parse("unit.cpp", {}, directory.path());
    std::map<Id, std::string> const names = namesOf(facts);
    std::multiset<std::pair<std::string, std::string>> uses;
    for (UseFacts const& use : facts.uses)
        uses.emplace(names.contains(use.owner) ? names.at(use.owner) : "?", useText(use, names));
    std::multiset<std::pair<std::string, std::string>> const wanted{
        {"Box", "reads u; writes v"},
        {"N", "types N"},
        {"a", "calls g; reads other"},
        {"answers", "calls asks"},
        {"asks", ""},
        {"asks", ""},
        {"big", ""},
        {"big", "calls one"}, // the instances, at compile time
        {"big", "calls one"},
        {"both", "calls twice twice get optional; reads b; address b; types Box"},
        {"builds", "address value fill"}, // by whatever U is made
        {"closures", "calls operator() operator(); reads outer generic"},
        {"get", "calls g; reads v"}, // of the instance
        {"get", "reads v"},
        {"global", "calls g"},
        {"m", "calls g; reads value; macros CALL"},
        {"never", "reads v"},
        {"operator()", "calls g; reads a"}, // inner, and the generic one for a long
        {"operator()", "calls g; reads a"},
        {"operator()", "calls g; reads z"}, // of both instances of twice
        {"operator()", "calls g; reads z"},
        {"one", ""},
        {"one", ""},
        {"one", ""},
        {"only", "reads v; writes value"},
        {"operator()", ""},
        {"operator()", "calls only"}, // the generic one of an instance of visits
        {"operator()", "calls operator(); reads a inner"},
        {"operator()", "reads a"}, // patterns
        {"operator()", "reads z w"},
        {"pointer", "address value; pointer -> value"},
        {"q", "calls g; reads value"},
        {"start", "calls visits"},
        {"visits", ""},
        {"visits", "calls hand"},
        {"twice", "calls g operator(); reads u"},
        {"twice", "calls g operator(); reads u"},
        {"twice", "reads u l w"},
    };
    EXPECT_EQ(uses, wanted);
    std::vector<std::string> overrides;
    for (OverrideFact const& fact : facts.overrides)
        overrides.push_back(names.at(fact.method) + " " + names.at(fact.overridden));
    EXPECT_EQ(overrides, (std::vector<std::string>{"f f", "~B ~A"}));
}

} // namespace
} // namespace zelkor::producer::test
