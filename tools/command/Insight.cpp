#include "Insight.hpp"

#include "Records.hpp"

#include <algorithm>

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;

namespace {

/// Adds what is in the model and not yet there; lists of one function are short.
template <class T, class Collection>
void unite(std::vector<T>& all, Collection const& more) {
    for (T const& element : more)
        if (element && !element.isProxy() && std::find(all.begin(), all.end(), element) == all.end())
            all.push_back(element);
}

} // namespace

Insight::Insight(za::Ast const& ast) {
    bool found = false;
    forEachElement(ast, [&](ModelElement const& element) {
        if (auto const record = za::codeinsight::FunctionInfo::cast(element)) {
            found = true;
            addRecord(record);
        } else if (auto const annotation = za::codeinsight::FunInfo::cast(element)) {
            found = true;
            addAnnotation(annotation);
        } else if (auto const variable = za::codeinsight::VariableInfo::cast(element)) {
            if (za::Variable const subject = variable.getVariable())
                variables_.emplace(subject.get(), variable);
        }
    });
    if (!found)
        throw UsageError(
            "the model has no code insight, so nobody knows what its functions call, read and write; import "
            "it anew with its function bodies: zelkor import -p BUILD_DIR -o FILE");
    for (std::size_t i = 0; i < functions_.size(); ++i)
        for (std::size_t j = 0; j < functions_[i].calls.size(); ++j)
            use(za::Function(functions_[i].calls[j]));
}

std::size_t Insight::use(za::Function const& function) {
    auto const [place, isNew] = indices_.emplace(function.get(), functions_.size());
    if (isNew) functions_.push_back({function});
    return place->second;
}

void Insight::addRecord(za::codeinsight::FunctionInfo const& record) {
    za::Function const function = record.getFunction();
    if (!function || function.isProxy()) return;
    FunctionUse& use = functions_[this->use(function)];
    unite(use.calls, record.getCalledFuns());
    unite(use.reads, record.getReadVars());
    unite(use.writes, record.getWrittenVars());
    use.isBodyKnown |= record.getIsDefined() || function.hasBodyPosition() || record.hasCalledFuns() ||
                       record.hasReadVars() || record.hasWrittenVars();
    use.isAddressTaken |= record.getIsAddressTaken();
}

void Insight::addAnnotation(za::codeinsight::FunInfo const& annotation) {
    za::Function const function = za::Function::cast(annotation.container());
    if (!function) return;
    FunctionUse& use = functions_[this->use(function)];
    unite(use.calls, annotation.getCalledFuns());
    unite(use.reads, annotation.getReadVars());
    unite(use.writes, annotation.getWrittenVars());
    use.isBodyKnown = true;
}

std::optional<std::size_t> Insight::indexOf(za::Function const& function) const {
    auto const found = indices_.find(function.get());
    return found == indices_.end() ? std::nullopt : std::optional(found->second);
}

za::codeinsight::VariableInfo Insight::recordOf(za::Variable const& variable) const {
    auto const found = variables_.find(variable.get());
    return found == variables_.end() ? za::codeinsight::VariableInfo() : found->second;
}

za::Function patternOf(za::Function const& function) {
    if (za::Template const made = function.getAssocTemplate(); made && !made.isProxy()) {
        auto const pattern = za::Function::cast(made.getProtoTypeInstantiation());
        return pattern == function ? za::Function() : pattern;
    }
    auto const method = za::types::Method::cast(function);
    za::types::StructType const owner = method ? method.getOwningAggregate() : za::types::StructType();
    if (!owner || !owner.getAssocTemplate() || owner.getAssocTemplate().isProxy()) return {};
    auto const pattern = za::types::StructType::cast(owner.getAssocTemplate().getProtoTypeInstantiation());
    Place const place = placeOf(method);
    if (!pattern || pattern == owner || !place.known()) return {};
    for (za::types::Method const& candidate : pattern.getMethods()) {
        if (candidate.getName() != method.getName()) continue;
        if (placeOf(candidate).text() == place.text()) return candidate;
        for (za::source::SourcePosition const& declared : candidate.getDeclPos())
            if (placeOf(declared).text() == place.text()) return candidate;
    }
    return {};
}

} // namespace zelkor::command
