// Walks over a model in the library: by its typed accessors and by reflection.
#pragma once

#include "Stage.hpp"

#include <brant/zero/Visit.hpp>
#include <zelkor/ast.hpp>

namespace zelkor::bench {

namespace za = zelkor::ast;

/// Visits by the typed accessors.
struct OursVisitor {
    WalkSums sums;

    void visit(za::source::SourcePosition const& position) {
        ++sums.elements;
        sums.places += position.getLine() + position.getCol();
        sums.references += position.hasFile();
    }
    void visitSymbol(za::Symbol const& symbol) {
        ++sums.elements;
        sums.textBytes += symbol.getName().size();
        if (auto const position = symbol.getDefPos()) visit(position);
        for (auto const position : symbol.getDeclPos())
            visit(position);
    }
    void visit(za::Variable const& variable) {
        visitSymbol(variable);
        sums.references += variable.hasType();
        auto const value = za::constants::NumericConstant::cast(variable.getInitVal());
        if (!value) return;
        ++sums.elements;
        sums.textBytes += value.getValue().size();
        sums.references += value.hasType();
    }
    void visit(za::Function const& function) {
        visitSymbol(function);
        sums.references += function.hasType();
        if (auto const body = function.getScope()) visit(body);
        for (auto const param : function.getParams())
            visit(param);
        for (auto const argument : function.getTemplateArgs()) {
            ++sums.elements;
            sums.references += argument.hasType();
        }
    }
    void visit(za::types::Type const& type) {
        visitSymbol(type);
        if (auto const based = za::types::BasedType::cast(type)) {
            sums.references += based.hasType();
        } else if (auto const record = za::types::StructType::cast(type)) {
            for (auto const member : record.getMembers())
                visit(member);
            for (auto const method : record.getMethods())
                visit(method);
        }
    }
    void visit(za::Scope const& scope) {
        ++sums.elements;
        for (auto const space : scope.getNamespaces()) {
            if (auto const named = za::Namespace::cast(space)) sums.textBytes += named.getName().size();
            visit(space);
        }
        for (auto const symbol : scope.getSymbols()) {
            if (auto const function = za::Function::cast(symbol))
                visit(function);
            else if (auto const type = za::types::Type::cast(symbol))
                visit(type);
            else
                visit(za::Variable::cast(symbol));
        }
    }
    void visit(za::Project const& project) {
        ++sums.elements;
        for (auto const file : project.getFiles()) {
            ++sums.elements;
            sums.textBytes += file.getPath().size() + file.getWrittenName().size();
            sums.references += file.getIncludedFiles().size();
        }
        for (auto const unit : project.getCompilations()) {
            sums.references += unit.getFiles().size();
            visit(unit);
        }
    }
};

/// Visits through the rows of each class alone. Contained elements wait in `open`.
struct OursReflectiveVisitor {
    using Body = brant::zero::ModelElementImpl;
    using Row = brant::zero::schema::PropertyRow;
    WalkSums sums;
    std::uint64_t numbers = 0;
    std::vector<Body const*> open;

    void operator()(Row const&, std::string const& text) { sums.textBytes += text.size(); }
    void operator()(Row const&, std::u16string const& text) { sums.textBytes += text.size(); }
    void operator()(Row const& row, Body const* element) {
        if (!element || row.kind == brant::zero::schema::PropertyKind::ContainerEnd) return;
        if (row.contained())
            open.push_back(element);
        else
            ++sums.references;
    }
    void operator()(Row const& row, brant::zero::ReferenceSequence const& elements) {
        if (!row.contained())
            sums.references += elements.size();
        else
            open.insert(open.end(), elements.slots(), elements.slots() + elements.size());
    }
    void operator()(Row const&, brant::zero::ReferenceCollection const& map) {
        for (auto const& element : map.getAllValues())
            open.push_back(element.get());
    }
    void operator()(Row const&, brant::zero::AbstractPrimitiveCollection const& values) {
        numbers += values.empty() ? 0 : 1;
    }
    void operator()(Row const&, brant::zero::EnumerationNumber number) {
        numbers += static_cast<unsigned>(number.value);
    }
    template <class Number>
    requires std::is_arithmetic_v<Number>
    void operator()(Row const&, Number number) { numbers += static_cast<std::uint64_t>(number); }

    void visit(Body const& root) {
        open.push_back(&root);
        while (!open.empty()) {
            Body const& element = *open.back();
            open.pop_back();
            ++sums.elements;
            brant::zero::visitFeatures(element, *this);
        }
    }
};

} // namespace zelkor::bench
