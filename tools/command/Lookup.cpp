#include "Lookup.hpp"

#include "Signatures.hpp"

#include <brant/zero/Visit.hpp>

#include <algorithm>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>
#include <tuple>
#include <unordered_set>

namespace zelkor::command {

namespace za = zelkor::ast;
using brant::zero::ModelElement;
using brant::zero::ModelElementImpl;

namespace {

constexpr std::size_t suggestions = 5;

/// Puts what the element owns on the stack, so that the first child comes off first.
void pushChildren(ModelElementImpl const& element, std::vector<ModelElementImpl const*>& stack) {
    std::size_t const bottom = stack.size();
    brant::zero::visitFeatures(element, [&](brant::zero::schema::PropertyRow const& row, auto const& value) {
        using T = std::remove_cvref_t<decltype(value)>;
        if (!row.owning()) return;
        if constexpr (std::is_same_v<T, ModelElementImpl*>) {
            if (value != nullptr) stack.push_back(value);
        } else if constexpr (std::is_same_v<T, brant::zero::ReferenceSequence>) {
            stack.insert(stack.end(), value.slots(), value.slots() + value.size());
        } else if constexpr (std::is_same_v<T, brant::zero::ReferenceCollection>) {
            for (ModelElement const& member : value.getAllValues())
                stack.push_back(member.get());
        }
    });
    std::reverse(stack.begin() + static_cast<std::ptrdiff_t>(bottom), stack.end());
}

/// Symbols, namespaces and macros in the order of the model.
std::vector<ModelElement> namedElements(za::Ast const& ast) {
    std::vector<ModelElement> named;
    forEachElement(ast, [&](ModelElement const& element) {
        if (hasName(element)) named.push_back(element);
    });
    return named;
}

/// Macros have no scope, and a name that is not part of the word needs not be written out to differ from it.
bool mayBeQualifiedBy(ModelElement const& element, std::string const& word) {
    return za::Template::cast(element) || word.find(simpleName(element)) != std::string::npos;
}

/// The names nearest to a word, at most five, the best first.
std::vector<std::string> nearestOf(std::string const& word, std::vector<std::string> const& names) {
    std::size_t const limit = std::max<std::size_t>(2, word.size() / 3);
    std::unordered_set<std::string_view> seen;
    std::vector<std::tuple<std::size_t, std::size_t, std::string>> ranked;
    for (std::string const& name : names) {
        std::size_t const difference =
            std::max(name.size(), word.size()) - std::min(name.size(), word.size());
        if (name.empty() || difference > limit || !seen.insert(name).second) continue;
        std::size_t const distance = editDistance(word, name);
        if (distance <= limit) ranked.emplace_back(distance, ranked.size(), name);
    }
    std::sort(ranked.begin(), ranked.end());
    std::vector<std::string> nearest;
    for (auto& [distance, order, name] : ranked)
        if (nearest.size() < suggestions) nearest.push_back(std::move(name));
    return nearest;
}

/// Of a qualified word first what has the same simple name: its scope may be the wrong one.
std::vector<std::string> nearestNames(std::vector<ModelElement> const& named, std::string const& word) {
    std::size_t const scope = word.rfind("::");
    std::vector<std::string> names;
    std::vector<std::string> nearest;
    for (ModelElement const& element : named) {
        names.push_back(scope == std::string::npos ? simpleName(element) : qualifiedName(element));
        bool const isSame =
            scope != std::string::npos && word.compare(scope + 2, word.npos, simpleName(element)) == 0;
        if (isSame && std::find(nearest.begin(), nearest.end(), names.back()) == nearest.end())
            nearest.push_back(names.back());
    }
    for (std::string const& name : nearestOf(word, names))
        if (std::find(nearest.begin(), nearest.end(), name) == nearest.end()) nearest.push_back(name);
    nearest.resize(std::min(nearest.size(), suggestions));
    return nearest;
}

NameEnds nameEnds(std::vector<ModelElement> const& named) {
    std::vector<std::string> inlineNamespaces;
    for (ModelElement const& element : named)
        if (auto const space = za::Namespace::cast(element); space && space.getIsInline())
            inlineNamespaces.push_back(qualifiedName(space));
    return NameEnds(std::move(inlineNamespaces));
}

/// What to do about a subject that is of no use by itself.
std::string adviceOn(ModelElement const& subject, std::string const& word) {
    bool const holdsMore = za::Namespace::cast(subject) || za::types::AggregateType::cast(subject) ||
                           za::Template::cast(subject);
    return holdsMore ? "; zelkor list FILE --in '" + word + "' tells what is inside" : "";
}

} // namespace

void forEachBelow(ModelElement const& root, std::function<void(ModelElement const&)> const& visit) {
    std::vector<ModelElementImpl const*> stack{root.get()};
    while (!stack.empty()) {
        ModelElementImpl const& element = *stack.back();
        stack.pop_back();
        if (!element.valid() || element.isProxy()) continue;
        visit(element.This());
        pushChildren(element, stack);
    }
}

std::vector<ModelElement> childrenOf(ModelElement const& element) {
    std::vector<ModelElementImpl const*> below;
    pushChildren(*element.get(), below);
    std::vector<ModelElement> children;
    for (auto child = below.rbegin(); child != below.rend(); ++child)
        if ((*child)->valid() && !(*child)->isProxy()) children.push_back((*child)->This());
    return children;
}

void forEachElement(za::Ast const& ast, std::function<void(ModelElement const&)> const& visit) {
    for (ModelElement const& root : ast.getModel().getTopLevelElements())
        forEachBelow(root, visit);
}

bool isPredefined(ModelElement const& element) {
    auto const macro = za::Macro::cast(element);
    return macro && macro.getIsPreDef();
}

bool hasName(ModelElement const& element) {
    return za::Symbol::cast(element) || za::Namespace::cast(element) || za::Macro::cast(element);
}

std::string simpleName(ModelElement const& element) {
    if (auto const symbol = za::Symbol::cast(element)) return symbol.getName();
    if (auto const space = za::Namespace::cast(element)) return space.getName();
    if (auto const macro = za::Macro::cast(element)) return brant::zero::toUtf8(macro.getName());
    return {};
}

std::string qualifiedName(ModelElement const& element) {
    if (auto const symbol = za::Symbol::cast(element)) return symbol.getFullyQualifiedName();
    if (auto const scope = za::Scope::cast(element)) return scope.getFullyQualifiedName();
    return simpleName(element);
}

bool isLocal(ModelElement const& element, ModelElement const& root) {
    for (ModelElement up = element.container(); up && !(up == root); up = up.container())
        if (za::Function::cast(up) || za::Template::cast(up)) return true;
    return false;
}

Lookup lookUp(za::Ast const& ast, std::string const& word) {
    if (word.empty()) throw UsageError("a name must not be empty");
    Lookup result;
    brant::zero::uuid identity;
    if (brant::zero::parseUuid(word, identity))
        if (ModelElement const element = ast.getModel().findElement(identity)) {
            result.elements.push_back(element);
            return result;
        }
    std::vector<ModelElement> const named = namedElements(ast);
    auto const take = [&](auto const& fits) {
        std::copy_if(named.begin(), named.end(), std::back_inserter(result.elements), fits);
        return !result.elements.empty();
    };
    // A parameter has its simple name for a qualified one, but is not what a person means before all fields.
    bool const hasScope = word.find("::") != std::string::npos;
    if (take([&](ModelElement const& element) {
            return mayBeQualifiedBy(element, word) && qualifiedName(element) == word &&
                   (hasScope || !isLocal(element));
        }))
        return result;
    NameEnds const ends = nameEnds(named);
    std::optional<SignaturePattern> const signature = SignaturePattern::of(word);
    for (bool const skipScopes : {false, true})
        if (signature && take([&](ModelElement const& element) {
                auto const function = za::Function::cast(element);
                return function && signature->fits(function, ends, skipScopes);
            }))
            return result;
    bool const hasArguments = word.ends_with('>');
    if (!take([&](ModelElement const& element) {
            if (simpleName(element) == word) return true;
            return (hasScope || hasArguments) && mayBeQualifiedBy(element, word) &&
                   ends.fit(word, qualifiedName(element));
        }))
        result.nearest = nearestNames(named, signature ? signature->name() : word);
    return result;
}

bool isPathOf(std::string const& word, std::string const& path) {
    if (word.empty()) return false;
    if (path == word || (path.ends_with(word) && path[path.size() - word.size() - 1] == '/')) return true;
    return path.starts_with(word) && (word.back() == '/' || path[word.size()] == '/');
}

Lookup lookUpFiles(za::Ast const& ast, std::string const& word) {
    Lookup result;
    std::vector<std::string> names;
    bool const hasFolder = word.find('/') != std::string::npos;
    forEachElement(ast, [&](ModelElement const& element) {
        auto const file = za::source::SourceFile::cast(element);
        if (!file) return;
        std::string const path = brant::zero::toUtf8(file.getPath());
        if (path == word || path.ends_with('/' + word) || file->identifier() == word)
            result.elements.push_back(file);
        names.push_back(hasFolder ? path : path.substr(path.rfind('/') + 1));
    });
    if (result.elements.empty()) result.nearest = nearestOf(word, names);
    return result;
}

std::vector<ModelElement> subjects(za::Ast const& ast, std::string const& word,
                                   std::function<bool(ModelElement const&)> const& fits, char const* what) {
    Lookup const lookup = lookUp(ast, word);
    if (lookup.elements.empty()) reportMissing(word, lookup);
    std::vector<ModelElement> found;
    for (ModelElement const& element : lookup.elements) {
        auto const made = za::Template::cast(element);
        ModelElement const subject = made ? made.getProtoTypeInstantiation() : element;
        if (subject && fits(subject) && std::find(found.begin(), found.end(), subject) == found.end())
            found.push_back(subject);
    }
    if (found.empty() && !lookup.elements.empty())
        throw UsageError("'" + word + "' is a " + lookup.elements.front()->classTable().shortName +
                         " and has no " + what + adviceOn(lookup.elements.front(), word));
    return found;
}

int reportMissing(std::string const& word, Lookup const& lookup) {
    std::cerr << "zelkor: there is no '" << word << "' in the model";
    if (!lookup.nearest.empty()) std::cerr << "; the nearest names are:";
    std::cerr << '\n';
    for (std::string const& name : lookup.nearest)
        std::cerr << "  " << name << '\n';
    return Difference;
}

} // namespace zelkor::command
