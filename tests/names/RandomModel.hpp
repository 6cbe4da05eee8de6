/// \file
/// Small random models for comparisons with plain rules.
#pragma once

#include "names/NameSupport.hpp"

#include <random>
#include <utility>

namespace testnames {

/// Makes one symbol after another; each refers only to those before it, so that no name is endless.
class RandomModel {
  public:
    /// \param names what things are called; the first three are the common ones.
    explicit RandomModel(std::uint32_t seed, int steps = 60, std::vector<std::string> names = oddNames())
        : random_(seed), names_(std::move(names)) {
        scopes_.push_back(m.root());
        types_.push_back(m.integer());
        for (int i = 0; i < steps; ++i)
            step();
    }

    Maker m;
    std::vector<za::Scope> const& scopes() const { return scopes_; }
    std::vector<za::Symbol> const& symbols() const { return symbols_; }
    std::vector<zt::Type> const& types() const { return types_; }
    std::vector<za::TemplateArg> const& arguments() const { return arguments_; }

    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }
    bool chance(unsigned percent) { return below(100) < percent; }
    std::string const& name() { return names_[below(chance(70) ? 3 : static_cast<unsigned>(names_.size()))]; }
    template <class T>
    T pick(std::vector<T> const& from) {
        return from[below(static_cast<unsigned>(from.size()))];
    }

  private:
    static std::vector<std::string> oddNames() {
        return {"a", "Foo", "b  c", "", "x\ty", "T", "#unnamed#", "a...b", " "};
    }
    zt::Type anyType() { return chance(4) ? zt::Type() : pick(types_); }
    za::Scope anyScope() { return chance(15) ? za::Scope() : pick(scopes_); }

    template <class T>
    void addArguments(T const& owner) {
        if (!chance(35)) return;
        for (unsigned count = below(4); count > 0; --count) {
            za::TemplateArg const made = argument();
            m.with(owner, {made});
            arguments_.push_back(made);
        }
    }
    za::TemplateArg argument() {
        switch (below(8)) {
        case 0:
            return m.packMark();
        case 1:
            return m.argument(za::TemplateArgKind::TemplateTemplate, name());
        case 2:
            return m.valueArgument(chance(20) ? zc::Constant() : m.number("7", anyType(), name()));
        case 3:
            return m.valueArgument(
                chance(50) ? zc::Constant(m.address(za::AddressKind(below(4)), name()))
                           : zc::Constant(m.constant<zc::TemplateParamConstant>(anyType(), name())));
        default:
            return m.typeArgument(anyType());
        }
    }
    template <class T>
    void take(T const& symbol, bool hasInside) {
        // First of all, lest it becomes an argument of itself.
        if constexpr (requires { symbol.getTemplateArgs(); }) addArguments(symbol);
        symbols_.push_back(symbol);
        if constexpr (std::is_base_of_v<zt::Type, T>) types_.push_back(symbol);
        if constexpr (requires { symbol.setScope(za::Scope()); })
            if (hasInside) scopes_.push_back(m.inside(symbol));
    }
    template <class T>
    void layer() {
        take(m.over<T>(anyType()), false);
    }
    template <class T>
    T declaration() {
        std::vector<za::Variable> parameters;
        for (unsigned count = below(4); count > 0; --count)
            parameters.push_back(chance(20) ? m.pack(name(), anyType()) : m.variable(name(), anyType()));
        T declared = m.declare<T>(name(), anyType(), parameters, anyScope());
        declared.setIsInline(chance(20));
        declared.setIsVariadic(chance(30));
        declared.setIsDeleted(chance(10));
        return declared;
    }
    void makeType() {
        switch (below(16)) {
        case 0:
            return take(m.integer(IntegerKind::SignedLong, chance(50)), false);
        case 1:
            return layer<zt::PointerType>();
        case 2:
            return layer<zt::LValueReferenceType>();
        case 3:
            return layer<zt::RValueReferenceType>();
        case 4:
            return take(m.qualified(chance(50) ? "c" : chance(50) ? "vr" : "", anyType()), false);
        case 5:
            return take(m.array(anyType(), {static_cast<int>(below(3)), 2}), false);
        case 6:
            return take(m.vector(anyType(), static_cast<int>(below(3))), false);
        case 7:
            return layer<zt::TypeOpType>();
        case 8:
        case 9:
            return take(m.alias(name(), anyType(), anyScope()), false);
        case 10:
        case 11: {
            std::vector<zt::Type> parameters;
            for (unsigned count = below(3); count > 0; --count)
                parameters.push_back(anyType());
            return take(m.function(anyType(), parameters, chance(30)), false);
        }
        case 12:
            return take(m.param(name(), chance(50), anyScope()), false);
        case 13:
            return take(m.make<zt::NullPtrType>(name()), false);
        case 14:
            return take(m.make<zt::EnumType>(name(), anyScope()), false);
        default:
            return take(m.make<zt::Type>(name()), false);
        }
    }
    void step() {
        switch (below(10)) {
        case 0:
            scopes_.push_back(chance(80) ? za::Scope(m.space(name(), anyScope())) : m.block(anyScope()));
            break;
        case 1:
            take(m.make<zt::ClassType>(name(), anyScope()), chance(60));
            break;
        case 2:
            take(m.make<zt::UnionType>(name(), anyScope()), chance(30));
            break;
        case 3:
            take(declaration<za::Function>(), chance(40));
            break;
        case 4: {
            zt::Method const method = declaration<zt::Method>();
            method.setIsVirtual(chance(40));
            method.setIsThisConst(chance(40));
            if (auto const owner = zt::StructType::cast(pick(types_))) m.methodOf(owner, method);
            take(method, chance(30));
            break;
        }
        case 5:
            if (auto const owner = zt::AggregateType::cast(pick(types_)))
                symbols_.push_back(m.memberOf(owner, name(), anyType()));
            else
                symbols_.push_back(m.variable(name(), anyType(), anyScope()));
            break;
        case 6: {
            auto const made = m.make<za::Template>(name(), anyScope());
            made.setIsExported(chance(20));
            if (chance(60) && !symbols_.empty()) made.setProtoTypeInstantiation(pick(symbols_));
            take(made, chance(40));
            break;
        }
        default:
            makeType();
        }
    }

    std::mt19937 random_;
    std::vector<std::string> names_;
    std::vector<za::Scope> scopes_;
    std::vector<za::Symbol> symbols_;
    std::vector<zt::Type> types_;
    std::vector<za::TemplateArg> arguments_;
};

} // namespace testnames
