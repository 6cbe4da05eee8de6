// Queries against loops written by hand, over random models: the same elements in the same order.

#include "walks/QuerySample.hpp"

#include "zelkor/ast/query.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <regex>

using namespace querytest;
namespace zs = zelkor::ast::source;
using brant::zero::ModelElement;

namespace {

struct Tally {
    std::size_t compared = 0;
    std::size_t found = 0;
};

template <class X>
std::vector<X> byHand(std::vector<ModelElement> const& elements,
                      std::function<bool(X const&)> const& wanted) {
    std::vector<X> found;
    for (ModelElement const& element : elements)
        if (X const x = X::cast(element); x && wanted(x)) found.push_back(x);
    return found;
}

/// Runs a query over several models, from a unit and from the model, and compares it with the loop.
template <class X, class C>
Tally compare(C const& condition, std::function<bool(X const&)> const& wanted) {
    Tally tally;
    for (std::uint32_t seed = 1; seed <= 5; ++seed) {
        Sample const sample(seed);
        auto const below = za::query<X>(sample.unit).where(condition);
        std::vector<X> const expected = byHand<X>(elementsBelow(sample.unit), wanted);
        EXPECT_EQ(below.toVector(), expected) << below;
        auto const all = za::query<X>(sample.ast.getModel()).where(condition);
        std::vector<X> const everywhere = byHand<X>(elementsOf(sample.ast.getModel()), wanted);
        EXPECT_EQ(all.toVector(), everywhere) << all;
        EXPECT_EQ(all.count(), everywhere.size());
        EXPECT_EQ(all.exists(), !everywhere.empty());
        EXPECT_EQ(all.first(), everywhere.empty() ? X() : everywhere.front());
        std::vector<X> iterated;
        for (X const& element : all)
            iterated.push_back(element);
        EXPECT_EQ(iterated, everywhere);
        tally.compared += byHand<X>(elementsOf(sample.ast.getModel()), [](X const&) { return true; }).size();
        tally.found += everywhere.size();
    }
    return tally;
}

#define EXPECT_SAME(X, condition, wanted)                                                                    \
    {                                                                                                        \
        SCOPED_TRACE(#condition);                                                                            \
        Tally const tally = compare<X>(condition, wanted);                                                   \
        EXPECT_GT(tally.found, 0u) << "nothing is found";                                                    \
        EXPECT_LT(tally.found, tally.compared) << "everything is found";                                     \
    }

bool startsWith(std::string const& text, std::string const& start) {
    return text.compare(0, start.size(), start) == 0;
}

} // namespace

TEST(Query, Attributes) {
    using F = za::Function;
    EXPECT_SAME(F, F::isInline() == true, [](F const& f) { return f.getIsInline(); });
    EXPECT_SAME(F, F::isInline() != true, [](F const& f) { return !f.getIsInline(); });
    EXPECT_SAME(F, F::name() == "getValue", [](F const& f) { return f.getName() == "getValue"; });
    EXPECT_SAME(F, F::name() != std::string("x"), [](F const& f) { return f.getName() != "x"; });
    EXPECT_SAME(F, F::name() < "h", [](F const& f) { return f.getName() < "h"; });
    EXPECT_SAME(F, F::name() >= "set", [](F const& f) { return f.getName() >= "set"; });
    EXPECT_SAME(F, F::numOptionalParams() > 1u, [](F const& f) { return f.getNumOptionalParams() > 1; });
    EXPECT_SAME(F, F::numOptionalParams() <= 2, [](F const& f) { return f.getNumOptionalParams() <= 2; });
    EXPECT_SAME(F, F::storageClass() == za::StorageClassKind::Static,
                [](F const& f) { return f.getStorageClass() == za::StorageClassKind::Static; });
    EXPECT_SAME(F, F::storageClass() != za::StorageClassKind::Static,
                [](F const& f) { return f.getStorageClass() != za::StorageClassKind::Static; });
    using P = zs::SourcePosition;
    EXPECT_SAME(P, P::line() < 100u && P::col() >= 40u,
                [](P const& p) { return p.getLine() < 100 && p.getCol() >= 40; });
    EXPECT_EQ(compare<P>(P::line() < -1, [](P const&) { return false; }).found, 0u)
        << "numbers by their value";
    EXPECT_GT(compare<P>(P::line() > -1, [](P const&) { return true; }).found, 0u);
}

TEST(Query, Texts) {
    using F = za::Function;
    EXPECT_SAME(F, F::name().startsWith("get"), [](F const& f) { return startsWith(f.getName(), "get"); });
    EXPECT_SAME(F, F::name().endsWith("Value"),
                [](F const& f) { return std::regex_match(f.getName(), std::regex(".*Value")); });
    EXPECT_SAME(F, F::name().contains("iz"),
                [](F const& f) { return f.getName().find("iz") != std::string::npos; });
    EXPECT_SAME(F, F::name().matches("[gs]et([A-Z].*)?"),
                [](F const& f) { return std::regex_match(f.getName(), std::regex("[gs]et([A-Z].*)?")); });
    using S = zs::SourceFile;
    EXPECT_SAME(S, S::path().endsWith(u".h"),
                [](S const& s) { return s.getPath() == u"lib/b.h" || s.getPath() == u"/usr/include/d.h"; });
    EXPECT_SAME(S, S::path() > u"a.c", [](S const& s) { return s.getPath() > u"a.c"; });
    EXPECT_SAME(S, S::path().matches("lib/.\\.h(pp)?"), [](S const& s) { return s.getPath()[0] == u'l'; });
    EXPECT_EQ(compare<F>(F::name().startsWith("no such"), [](F const&) { return false; }).found, 0u);
    EXPECT_GT(compare<F>(F::name().contains(""), [](F const&) { return true; }).found, 0u);
}

TEST(Query, Collections) {
    using F = za::Function;
    using V = za::Variable;
    auto const isPointer = [](V const& v) { return static_cast<bool>(zt::PointerType::cast(v.getType())); };
    auto const pointer = V::type().is<zt::PointerType>();
    auto const number = [=](F const& f) { return std::ranges::count_if(f.getParams(), isPointer); };
    EXPECT_SAME(F, F::params().any(), [](F const& f) { return f.hasParams(); });
    EXPECT_SAME(F, F::params().none(), [](F const& f) { return !f.hasParams(); });
    EXPECT_SAME(F, F::params().any(pointer), [=](F const& f) { return number(f) > 0; });
    EXPECT_SAME(F, F::params().none(pointer), [=](F const& f) { return number(f) == 0; });
    EXPECT_SAME(F, F::params().all(pointer),
                [=](F const& f) { return number(f) == static_cast<std::ptrdiff_t>(f.getParams().size()); });
    EXPECT_SAME(F, F::params().count() == 3, [](F const& f) { return f.getParams().size() == 3; });
    EXPECT_SAME(F, F::params().count(pointer) >= 2u, [=](F const& f) { return number(f) >= 2; });
    using S = zt::StructType;
    EXPECT_SAME(S, S::methods().all(zt::Method::isVirtual() == true), [](S const& s) {
        return std::ranges::all_of(s.getMethods(), [](zt::Method const& m) { return m.getIsVirtual(); });
    });
    EXPECT_SAME(S, S::methods().any(zt::Method::params().any(V::name() == "x")), [](S const& s) {
        return std::ranges::any_of(s.getMethods(), [](zt::Method const& m) {
            return std::ranges::any_of(m.getParams(), [](V const& v) { return v.getName() == "x"; });
        });
    });
}

TEST(Query, References) {
    using F = za::Function;
    using V = za::Variable;
    EXPECT_SAME(V, V::type().is<zt::ReferenceType>(),
                [](V const& v) { return static_cast<bool>(zt::ReferenceType::cast(v.getType())); });
    EXPECT_SAME(V, V::type().is<zt::StructType>(),
                [](V const& v) { return static_cast<bool>(zt::StructType::cast(v.getType())); });
    EXPECT_SAME(V, V::type().isExactly<zt::StructType>(), [](V const& v) {
        return v.getType() && v.getType().getMetaClass() == zt::StructType::metaClass();
    });
    EXPECT_SAME(V, V::type().isNull(), [](V const& v) { return !v.getType(); });
    EXPECT_SAME(V, !V::type().isNull() && !V::owningScope().isNull(),
                [](V const& v) { return v.getType() && v.getOwningScope(); });
    EXPECT_SAME(V, V::type().any(zt::Type::name() == "get"),
                [](V const& v) { return v.getType() && v.getType().getName() == "get"; });
    EXPECT_SAME(V, V::type().then(zt::Type::name()) == "get",
                [](V const& v) { return v.getType() && v.getType().getName() == "get"; });
    EXPECT_SAME(V, V::type().then(zt::Type::name()) != "get",
                [](V const& v) { return v.getType() && v.getType().getName() != "get"; });
    EXPECT_SAME(V, !(V::type().then(zt::Type::name()) == "get"),
                [](V const& v) { return !v.getType() || v.getType().getName() != "get"; });
    EXPECT_SAME(F, F::defPos().then(zs::SourcePosition::file()).then(zs::SourceFile::isInclude()) == true,
                [](F const& f) {
                    return f.getDefPos() && f.getDefPos().getFile() && f.getDefPos().getFile().getIsInclude();
                });
    EXPECT_SAME(F,
                F::defPos().then(zs::SourcePosition::file().then(zs::SourceFile::path())).startsWith(u"lib/"),
                [](F const& f) {
                    return f.getDefPos() && f.getDefPos().getFile() &&
                           f.getDefPos().getFile().getPath().starts_with(u"lib/");
                });
    auto const pointee = V::type().as<zt::PointerType>().then(zt::PointerType::type());
    auto const pointeeOf = [](V const& v) {
        zt::PointerType const pointer = zt::PointerType::cast(v.getType());
        return pointer ? pointer.getType() : zt::Type();
    };
    EXPECT_SAME(V, pointee.is<zt::VoidType>(),
                [=](V const& v) { return pointeeOf(v) && pointeeOf(v).isVoidType(); });
    EXPECT_SAME(V, pointee.isNull(), [=](V const& v) { return !pointeeOf(v); });
    EXPECT_SAME(F, F::owningScope().as<za::Namespace>().then(za::Namespace::name()) != "get", [](F const& f) {
        za::Namespace const space = za::Namespace::cast(f.getOwningScope());
        return space && space.getName() != "get";
    });
    EXPECT_SAME(za::Scope, za::Scope::symbols().as<F>().any(F::isInline() == true), [](za::Scope const& s) {
        return std::ranges::any_of(s.getSymbols(), [](za::Symbol const& symbol) {
            F const f = F::cast(symbol);
            return f && f.getIsInline();
        });
    });
    EXPECT_SAME(za::Scope, za::Scope::symbols().as<F>().all(F::isInline() == true), [](za::Scope const& s) {
        return std::ranges::all_of(s.getSymbols(), [](za::Symbol const& symbol) {
            F const f = F::cast(symbol);
            return !f || f.getIsInline();
        });
    });
    Sample const sample(1);
    using Project = za::Project;
    auto const files = [&](auto const& condition) {
        return za::query<Project>(sample.ast.getModel()).where(condition).count();
    };
    EXPECT_EQ(files(Project::files().count() == 4 &&
                    Project::files().count(zs::SourceFile::isInclude() == true) == 3),
              1u);
    EXPECT_EQ(files(Project::files().all(zs::SourceFile::isInclude() == true)), 0u);
    EXPECT_EQ(files(Project::files().any(zs::SourceFile::path() == u"a.c")), 1u);
}

TEST(Query, OneGivenElement) {
    for (std::uint32_t seed = 1; seed <= 3; ++seed) {
        Sample const sample(seed);
        for (zt::Type const& type : sample.types()) {
            auto const model = sample.ast.getModel();
            auto const all = elementsOf(model);
            EXPECT_EQ(za::query<za::Variable>(model).where(za::Variable::type() == type).toVector(),
                      byHand<za::Variable>(all, [&](auto const& v) { return v.getType() == type; }));
            EXPECT_EQ(za::query<za::Variable>(model).where(za::Variable::type() != type).toVector(),
                      byHand<za::Variable>(all, [&](auto const& v) { return v.getType() != type; }));
        }
    }
}

TEST(Query, AndOrNot) {
    using F = za::Function;
    auto const inlined = F::isInline() == true;
    auto const variadic = F::isVariadic() == true;
    auto const getter = F::name().startsWith("get");
    EXPECT_SAME(F, inlined && variadic && getter, [](F const& f) {
        return f.getIsInline() && f.getIsVariadic() && startsWith(f.getName(), "get");
    });
    EXPECT_SAME(F, inlined || (variadic && !getter), [](F const& f) {
        return f.getIsInline() || (f.getIsVariadic() && !startsWith(f.getName(), "get"));
    });
    EXPECT_SAME(F, !(inlined || variadic) && !getter, [](F const& f) {
        return !f.getIsInline() && !f.getIsVariadic() && !startsWith(f.getName(), "get");
    });
    EXPECT_SAME(za::Symbol, za::isA<F>() || za::Symbol::name() == "x",
                [](za::Symbol const& s) { return F::cast(s) != nullptr || s.getName() == "x"; });
    EXPECT_SAME(
        za::Symbol,
        za::satisfies<za::Symbol>("short", [](za::Symbol const& s) { return s.getName().size() < 4; }),
        [](za::Symbol const& s) { return s.getName().size() < 4; });
    // A condition on a superclass is asked of its subclasses.
    EXPECT_SAME(zt::Method, za::Symbol::name() == "x" || zt::Method::isVirtual() == true,
                [](zt::Method const& m) { return m.getName() == "x" || m.getIsVirtual(); });
}

TEST(Query, ExactClass) {
    Sample const sample(7);
    auto const all = elementsOf(sample.ast.getModel());
    auto const exact = za::query<zt::StructType>(sample.ast.getModel()).exactly();
    auto const expected = byHand<zt::StructType>(
        all, [](auto const& s) { return s.getMetaClass() == zt::StructType::metaClass(); });
    EXPECT_EQ(exact.toVector(), expected);
    EXPECT_GT(expected.size(), 0u);
    EXPECT_LT(expected.size(), za::query<zt::StructType>(sample.ast.getModel()).count());
    EXPECT_EQ(exact.where(zt::StructType::name() == "get").toVector(),
              byHand<zt::StructType>(
                  expected.empty() ? all : std::vector<ModelElement>(expected.begin(), expected.end()),
                  [](auto const& s) { return s.getName() == "get"; }));
    EXPECT_FALSE(za::query<za::Symbol>(sample.ast.getModel()).exactly().exists()) << "an abstract class";
}

TEST(Query, EveryClassIsFoundInOrder) {
    Sample const sample(3);
    auto const model = sample.ast.getModel();
    auto const all = elementsOf(model);
    auto const below = elementsBelow(sample.unit);
    auto const check = [&]<class X>(X*) {
        auto const any = [](X const&) { return true; };
        EXPECT_EQ(za::query<X>(model).toVector(), byHand<X>(all, any)) << X::Impl::table.name;
        EXPECT_EQ(za::query<X>(sample.unit).toVector(), byHand<X>(below, any)) << X::Impl::table.name;
        return za::query<X>(model).count();
    };
    EXPECT_GT(check(static_cast<za::Symbol*>(nullptr)), 100u);
    EXPECT_GT(check(static_cast<za::Scope*>(nullptr)), 40u);
    EXPECT_GT(check(static_cast<za::Variable*>(nullptr)), 100u);
    EXPECT_GT(check(static_cast<zt::Method*>(nullptr)), 10u);
    EXPECT_GT(check(static_cast<zt::PointerType*>(nullptr)), 5u);
    EXPECT_GT(check(static_cast<zs::SourcePosition*>(nullptr)), 10u);
    EXPECT_EQ(check(static_cast<zs::SourceFile*>(nullptr)), 4u);
    EXPECT_EQ(check(static_cast<za::Project*>(nullptr)), 1u);
    EXPECT_EQ(za::query<za::Comment>(model).count(), 0u);
    EXPECT_EQ(za::query<zs::CompilationUnit>(sample.unit).count(), 0u) << "the start is not below itself";
}
