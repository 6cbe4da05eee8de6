#include "Lookup.hpp"

#include <brant/zero/Visit.hpp>

#include <algorithm>
#include <iostream>
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

bool hasName(ModelElement const& element) {
    return za::Symbol::cast(element) || za::Namespace::cast(element) || za::Macro::cast(element);
}

/// Symbols, namespaces and macros in the order of the model.
std::vector<ModelElement> namedElements(za::Ast const& ast) {
    std::vector<ModelElement> named;
    for (ModelElement const& root : ast.getModel().getTopLevelElements())
        forEachBelow(root, [&](ModelElement const& element) {
            if (hasName(element)) named.push_back(element);
        });
    return named;
}

/// Macros have no scope, and a name that is not part of the word needs not be written out to differ from it.
bool mayBeQualifiedBy(ModelElement const& element, std::string const& word) {
    return za::Template::cast(element) || word.find(simpleName(element)) != std::string::npos;
}

std::vector<std::string> nearestNames(std::vector<ModelElement> const& named, std::string const& word) {
    bool const qualified = word.find("::") != std::string::npos;
    std::size_t const limit = std::max<std::size_t>(2, word.size() / 3);
    std::unordered_set<std::string> seen;
    std::vector<std::tuple<std::size_t, std::size_t, std::string>> ranked;
    for (ModelElement const& element : named) {
        std::string name = qualified ? qualifiedName(element) : simpleName(element);
        std::size_t const difference =
            std::max(name.size(), word.size()) - std::min(name.size(), word.size());
        if (name.empty() || difference > limit || !seen.insert(name).second) continue;
        std::size_t const distance = editDistance(word, name);
        if (distance <= limit) ranked.emplace_back(distance, ranked.size(), std::move(name));
    }
    std::sort(ranked.begin(), ranked.end());
    std::vector<std::string> names;
    for (auto& [distance, order, name] : ranked)
        if (names.size() < suggestions) names.push_back(std::move(name));
    return names;
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

Lookup lookUp(za::Ast const& ast, std::string const& word) {
    Lookup result;
    brant::zero::uuid identity;
    if (brant::zero::parseUuid(word, identity))
        if (ModelElement const element = ast.getModel().findElement(identity)) {
            result.elements.push_back(element);
            return result;
        }
    std::vector<ModelElement> const named = namedElements(ast);
    for (ModelElement const& element : named)
        if (mayBeQualifiedBy(element, word) && qualifiedName(element) == word)
            result.elements.push_back(element);
    if (!result.elements.empty()) return result;
    for (ModelElement const& element : named)
        if (simpleName(element) == word) result.elements.push_back(element);
    if (result.elements.empty()) result.nearest = nearestNames(named, word);
    return result;
}

int reportMissing(std::string const& word, Lookup const& lookup) {
    std::cerr << "zelkor: there is no '" << word << "' in the model";
    if (!lookup.nearest.empty()) std::cerr << "; the nearest names are:";
    std::cerr << '\n';
    for (std::string const& name : lookup.nearest)
        std::cerr << "  " << name << '\n';
    return Difference;
}

std::string jsonText(std::string const& text) {
    static char const digits[] = "0123456789abcdef";
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        auto const byte = static_cast<unsigned char>(text[i]);
        std::size_t const length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        std::string const character = text.substr(i, length);
        if (!brant::zero::isValidUtf8(character)) {
            out += std::string("\\udc") + digits[byte >> 4] + digits[byte & 15];
            ++i;
            continue;
        }
        if (byte < 0x20)
            out += std::string("\\u00") + digits[byte >> 4] + digits[byte & 15];
        else if (byte == '"' || byte == '\\')
            out += '\\' + character;
        else
            out += character;
        i += length;
    }
    return out + '"';
}

} // namespace zelkor::command
