#include "Insight.hpp"

#include "Records.hpp"

#include <algorithm>

namespace zelkor::command {

namespace za = zelkor::ast;
namespace insight = zelkor::ast::codeinsight;
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
        if (auto const record = insight::FunctionInfo::cast(element)) {
            found = true;
            add(record);
        } else if (auto const variable = insight::VariableInfo::cast(element)) {
            add(variable);
        } else if (auto const annotation = insight::FunInfo::cast(element)) {
            if (auto const function = za::Function::cast(annotation.container())) {
                found = true;
                add(annotation, function);
            }
        }
    });
    if (!found)
        throw UsageError(
            "the model has no code insight, so nobody knows what its functions call, read and write; import "
            "it anew with its function bodies: zelkor import -p BUILD_DIR -o FILE");
    findOpenPointers();
}

void Insight::findOpenPointers() {
    for (Use const& use : uses_)
        for (za::Variable const& pointer : use.writes) {
            if (!isFunctionPointer(pointer)) continue;
            std::vector<za::Function> const targets = functionsBehind(pointer);
            bool const isTarget =
                std::any_of(targets.begin(), targets.end(), [&](za::Function const& target) {
                    return std::find(use.points.begin(), use.points.end(), target) != use.points.end();
                });
            if (!isTarget) writtenFromElsewhere_.insert(pointer.get());
        }
}

bool Insight::mayHoldOthers(za::Variable const& pointer) const {
    return pointer.getOwningFunPrototype() || writtenFromElsewhere_.contains(pointer.get()) ||
           functionsBehind(pointer).empty();
}

Use& Insight::use(ModelElement const& user) {
    auto const [place, isNew] = indices_.emplace(user.get(), uses_.size());
    if (isNew) uses_.push_back({user});
    return uses_[place->second];
}

void Insight::add(insight::FunctionInfo const& record) {
    za::Function const function = record.getFunction();
    if (!function || function.isProxy()) return;
    Use& use = this->use(function);
    unite(use.calls, record.getCalledFuns());
    unite(use.reads, record.getReadVars());
    unite(use.writes, record.getWrittenVars());
    use.isBodyKnown |= record.getIsDefined() || function.hasBodyPosition() || record.hasCalledFuns() ||
                       record.hasReadVars() || record.hasWrittenVars();
    use.isAddressTaken |= record.getIsAddressTaken();
    for (za::Annotation const& annotation : record.getAnnotations())
        if (auto const pointers = insight::PtrInfo::cast(annotation))
            unite(use.points, pointers.getPointsTo());
        else if (auto const overriding = insight::FunInfo::cast(annotation))
            unite(overriders_[function.get()], overriding.getCalledFuns());
}

void Insight::add(insight::VariableInfo const& record) {
    za::Variable const variable = record.getVariable();
    if (!variable || variable.isProxy()) return;
    variables_.emplace(variable.get(), record);
    for (za::Annotation const& annotation : record.getAnnotations())
        if (auto const pointers = insight::PtrInfo::cast(annotation))
            unite(use(variable).points, pointers.getPointsTo());
        else if (auto const initializer = insight::FunInfo::cast(annotation))
            add(initializer, variable);
}

void Insight::add(insight::FunInfo const& annotation, ModelElement const& user) {
    Use& use = this->use(user);
    unite(use.calls, annotation.getCalledFuns());
    unite(use.reads, annotation.getReadVars());
    unite(use.writes, annotation.getWrittenVars());
    use.isBodyKnown = true;
}

std::vector<za::Function> Insight::overridersOf(za::Function const& method) const {
    std::vector<za::Function> all;
    auto const addNext = [&](za::Function const& from) {
        if (auto const found = overriders_.find(from.get()); found != overriders_.end())
            unite(all, found->second);
    };
    addNext(method);
    for (std::size_t i = 0; i < all.size(); ++i)
        addNext(za::Function(all[i]));
    return all;
}

std::vector<za::Function> Insight::functionsBehind(za::Variable const& pointer) const {
    std::vector<za::Function> functions;
    auto const found = indices_.find(pointer.get());
    if (found == indices_.end() || uses_[found->second].points.empty() || !isFunctionPointer(pointer))
        return functions;
    for (za::Symbol const& target : uses_[found->second].points)
        if (auto const function = za::Function::cast(target)) functions.push_back(function);
    return functions;
}

insight::VariableInfo Insight::recordOf(za::Variable const& variable) const {
    auto const found = variables_.find(variable.get());
    return found == variables_.end() ? insight::VariableInfo() : found->second;
}

bool isFunctionPointer(za::Variable const& variable) {
    za::types::Type const type = variable.getType();
    return type && za::types::FunctionType::cast(za::types::Type::getUnderlyingType(type));
}

bool isPattern(za::Function const& function) {
    auto const standsFor = [](auto const& symbol) {
        za::Template const made = symbol ? symbol.getAssocTemplate() : za::Template();
        return made && !made.isProxy() && made.getProtoTypeInstantiation() == symbol;
    };
    auto const method = za::types::Method::cast(function);
    return standsFor(function) || (method && standsFor(method.getOwningAggregate()));
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
