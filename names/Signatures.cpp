// Declarations in one line.

#include "NameWriter.hpp"
#include "TextPatterns.hpp"
#include "zelkor/ast/Template.hpp"
#include "zelkor/ast/Variable.hpp"
#include "zelkor/ast/types/Method.hpp"
#include "zelkor/ast/types/StructType.hpp"

namespace zelkor::ast::names {

void NameWriter::writeSignature(Body const& symbol) {
    CycleDetector detector;
    Body const* at = &symbol;
    while (isA<Template>(*at)) {
        auto const& made = as<Template>(*at);
        if (made.getIsExported()) out_ += "exported ";
        Body const* prototype = alive(made.getProtoTypeInstantiationBody());
        if (prototype == nullptr || detector.returned(*prototype)) break;
        at = prototype;
    }
    if (isA<types::Type>(*at)) return writeType(at, {}, false);
    if (isA<Function>(*at)) return writeFunctionSignature(as<Function>(*at));
    if (isA<Variable>(*at)) return writeVariableSignature(as<Variable>(*at));
    writeQualifiedName(*at);
    if (isA<Template>(*at)) out_ += "<#UnknownTemplateArgList#>";
}

void NameWriter::writeFunctionSignature(Function::Impl const& function) {
    types::Method::Impl const* method = isA<types::Method>(function) ? &as<types::Method>(function) : nullptr;
    if (method != nullptr && method->getIsVirtual()) out_ += "virtual ";
    if (function.getIsInline()) out_ += "inline ";
    Body const* type = alive(function.getTypeBody());
    if (type != nullptr && isA<types::FunctionType>(*type))
        if (Body const* result = alive(as<types::FunctionType>(*type).getRetTypeBody())) {
            writeType(result, {}, false);
            out_ += ' ';
        }
    writeQualifiedName(function);
    out_ += '(';
    writeParameters(function);
    out_ += ')';
    if (method != nullptr && method->getIsThisConst()) out_ += " const";
    if (function.getIsDeleted()) out_ += " = deleted";
}

void NameWriter::writeParameters(Function::Impl const& function) {
    auto const& parameters = function.getParams();
    if (parameters.empty()) {
        out_ += "void";
        return;
    }
    std::string_view separator;
    bool sawPack = false;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        Body const* parameter = alive(parameters.resolved(i));
        if (parameter == nullptr) continue;
        auto const& variable = as<Variable>(*parameter);
        sawPack = sawPack || variable.getIsParameterPack();
        out_ += separator;
        separator = ", ";
        writeVariableSignature(variable);
    }
    if (!sawPack && function.getIsVariadic()) {
        out_ += separator;
        out_ += "...";
    }
}

void NameWriter::writeVariableSignature(Variable::Impl const& variable) {
    if (variable.getIsParameterPack())
        writeType(variable.getTypeBody(), "... " + variable.getName(), false);
    else
        writeType(variable.getTypeBody(), variable.getName(), false);
}

std::string signature(Symbol::Impl const& symbol) {
    NameWriter writer;
    writer.writeSignature(symbol);
    return writer.take();
}

} // namespace zelkor::ast::names
