// Names from the outermost scope inward, and the two forms of argument lists.

#include "NameWriter.hpp"
#include "TextPatterns.hpp"
#include "zelkor/ast/Namespace.hpp"
#include "zelkor/ast/Template.hpp"
#include "zelkor/ast/constants/AddressConstant.hpp"
#include "zelkor/ast/constants/NumericConstant.hpp"
#include "zelkor/ast/types/Member.hpp"
#include "zelkor/ast/types/Method.hpp"
#include "zelkor/ast/types/StructType.hpp"
#include "zelkor/ast/types/TemplateParamType.hpp"
#include "zelkor/ast/types/TypedefType.hpp"

#include <algorithm>

namespace zelkor::ast::names {

namespace {

/// \returns the element that a scope is the inside of, or null.
Body const* insideOf(Scope::Impl const& scope) {
    if (Body const* owner = scope.getOwningTemplateBody()) return owner;
    if (Body const* owner = scope.getOwningAggregateBody()) return owner;
    return scope.getOwningFunBody();
}

/// \returns what qualifies the name of a symbol, or null.
Body const* ownerOf(Body const& symbol) {
    if (isA<types::TemplateParamType>(symbol)) return nullptr;
    if (isA<types::Method>(symbol)) return as<types::Method>(symbol).getOwningAggregateBody();
    if (isA<types::Member>(symbol)) return as<types::Member>(symbol).getAggregateBody();
    return as<Symbol>(symbol).getOwningScopeBody();
}

} // namespace

NameWriter::OpenList::OpenList(NameWriter& writer, Body const& element)
    : entered(writer.open_.size() < maximumNesting && !writer.spent() &&
              std::find(writer.open_.begin(), writer.open_.end(), &element) == writer.open_.end()),
      writer_(writer) {
    if (entered) writer.open_.push_back(&element);
}

NameWriter::OpenList::~OpenList() {
    if (entered) writer_.open_.pop_back();
}

bool NameWriter::collectChain(Body const& element) {
    CycleDetector detector;
    Body const* next = nullptr;
    for (Body const* at = &element; at != nullptr; at = next) {
        if (detector.returned(*at)) return false;
        ++visits_;
        if (isA<Scope>(*at)) {
            next = insideOf(as<Scope>(*at));
            if (next != nullptr || !isA<Namespace>(*at)) continue;
            next = as<Scope>(*at).getParentBody();
        } else {
            if (isA<Template>(*at) && (next = alive(as<Template>(*at).getProtoTypeInstantiationBody())))
                continue;
            next = ownerOf(*at);
        }
        chain_.push_back({at, next != nullptr});
    }
    return true;
}

void NameWriter::writeQualifiedName(Body const& element) {
    std::size_t const start = out_.size();
    std::size_t const first = chain_.size();
    if (!collectChain(element)) out_ += unnamed;
    for (std::size_t i = chain_.size(); i-- > first;) {
        if (out_.size() != start) out_ += "::";
        writeLink(Link(chain_[i]));
    }
    chain_.erase(chain_.begin() + static_cast<std::ptrdiff_t>(first), chain_.end());
}

void NameWriter::writeLink(Link const& link) {
    Body const& element = *link.element;
    if (isA<Scope>(element)) {
        out_ += as<Namespace>(element).getName();
        return;
    }
    std::string const& name = as<Symbol>(element).getName();
    if (!isA<types::Type>(element)) {
        out_ += name;
        if (!link.hasOwner || !isA<Function>(element)) return;
        auto const& function = as<Function>(element);
        if (function.getIsTemplate()) writeArguments(element, function.getTemplateArgs());
        return;
    }
    out_ += name.empty() ? unnamed : std::string_view(name);
    if (isA<types::AggregateType>(element)) {
        auto const& aggregate = as<types::AggregateType>(element);
        if (aggregate.getIsTemplate()) writeArguments(element, aggregate.getTemplateArgs());
    } else if (isA<types::TypedefType>(element)) {
        auto const& alias = as<types::TypedefType>(element);
        if (!alias.getTemplateArgs().empty()) writePlainArguments(element, alias.getTemplateArgs());
    }
}

void NameWriter::writeArguments(Body const& owner, Arguments const& arguments) {
    out_ += '<';
    if (OpenList const list(*this, owner); !list.entered) {
        out_ += unknown;
    } else {
        std::string_view separator;
        bool afterPackMark = false;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            Body const* argument = alive(arguments.resolved(i));
            if (argument == nullptr) continue;
            auto const& body = as<TemplateArg>(*argument);
            if (body.getKind() == TemplateArgKind::StartOfPackExpansion) {
                afterPackMark = true;
                continue;
            }
            out_ += separator;
            separator = ", ";
            if (spent()) {
                out_ += unknown;
                break;
            }
            writeArgument(body, afterPackMark);
            afterPackMark = false;
        }
    }
    out_ += '>';
}

void NameWriter::writePlainArguments(Body const& owner, Arguments const& arguments) {
    out_ += '<';
    if (OpenList const list(*this, owner); !list.entered) {
        out_ += unknown;
    } else {
        std::string_view separator;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            Body const* argument = alive(arguments.resolved(i));
            if (argument == nullptr) continue;
            out_ += separator;
            separator = ", ";
            if (spent()) {
                out_ += unknown;
                break;
            }
            writeArgument(as<TemplateArg>(*argument), false);
        }
    }
    out_ += '>';
}

void NameWriter::writeArgument(TemplateArg::Impl const& argument, bool afterPackMark) {
    ++visits_;
    switch (argument.getKind()) {
    case TemplateArgKind::Type:
        return writeTypeArgument(alive(argument.getTypeBody()), afterPackMark);
    case TemplateArgKind::NonType:
        return writeValueArgument(alive(argument.getValBody()), afterPackMark);
    case TemplateArgKind::StartOfPackExpansion:
        out_ += "...";
        return;
    default:
        out_ += "#Unsupported# ";
        if (afterPackMark) out_ += "... ";
        out_ += argument.getName();
    }
}

void NameWriter::writeTypeArgument(Body const* type, bool afterPackMark) {
    bool const isParameter = type != nullptr && isA<types::TemplateParamType>(*type);
    if (isParameter) out_ += afterPackMark ? "typename ... " : "typename ";
    std::size_t const start = out_.size();
    if (isParameter)
        out_ += as<Symbol>(*type).getName();
    else if (type != nullptr)
        writeType(type, {}, true);
    if (out_.size() == start) out_ += 'T';
}

void NameWriter::writeValueArgument(Body const* value, bool afterPackMark) {
    if (value == nullptr) {
        out_ += afterPackMark ? "#UnknownType# ... N" : "#UnknownType# N";
        return;
    }
    auto const& constant = as<constants::Constant>(*value);
    Body const* type = alive(constant.getTypeBody());
    if (isA<constants::NumericConstant>(*value)) {
        if (type != nullptr && isA<types::EnumType>(*type))
            writeEnumerator(as<types::EnumType>(*type), constant.getName());
        else
            out_ += as<constants::NumericConstant>(*value).getValue();
        return;
    }
    if (isA<constants::AddressConstant>(*value)) {
        auto const& address = as<constants::AddressConstant>(*value);
        bool const told = address.getKind() != AddressKind::Unknown && !address.getValue().empty();
        out_ += told ? std::string_view(address.getValue()) : "#UnknownAddress#";
        return;
    }
    if (type != nullptr) {
        std::size_t const start = out_.size();
        writeType(type, {}, true);
        if (out_.size() == start) out_ += "#UnknownType#";
        if (!constant.getName().empty()) out_ += ' ';
    }
    out_ += constant.getName();
}

void NameWriter::writeEnumerator(types::EnumType::Impl const& enumeration, std::string const& name) {
    std::size_t const start = out_.size();
    Body const* scope = enumeration.getOwningScopeBody();
    bool const byNamespace = !enumeration.getIsScopedEnum() && scope != nullptr && isA<Namespace>(*scope);
    writeQualifiedName(byNamespace ? *scope : enumeration);
    if (out_.size() != start) out_ += "::";
    out_ += name;
}

std::string qualifiedName(Body const& element) {
    NameWriter writer;
    writer.writeQualifiedName(element);
    return writer.take();
}

std::string argumentName(TemplateArg::Impl const& argument, bool afterPackMark) {
    NameWriter writer;
    writer.writeArgument(argument, afterPackMark);
    return writer.take();
}

} // namespace zelkor::ast::names
