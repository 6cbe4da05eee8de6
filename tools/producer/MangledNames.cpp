#include "MangledNames.hpp"

#include "DeclarationReader.hpp"

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>

namespace zelkor::producer {

namespace {

bool isInTemplate(CXCursor cursor) {
    for (; !clang_isInvalid(clang_getCursorKind(cursor)); cursor = clang_getCursorSemanticParent(cursor))
        if (isTemplateCursor(clang_getCursorKind(cursor))) return true;
    return false;
}

// Constructors have one for each kind of object; all hold the same arguments.
std::string mangledName(CXCursor function) {
    if (clang_getCursorKind(function) != CXCursor_Constructor)
        return toText(clang_Cursor_getMangling(function));
    CXStringSet* const all = clang_Cursor_getCXXManglings(function);
    if (all == nullptr) return {};
    std::string name = all->Count == 0 ? "" : clang_getCString(all->Strings[0]);
    clang_disposeStringSet(all);
    return name;
}

int step(char c) {
    switch (c) {
    case '<':
    case '(':
    case '[':
    case '{':
        return 1;
    case '>':
    case ')':
    case ']':
    case '}':
        return -1;
    default:
        return 0;
    }
}

// Without the list of parameters, and what stands around it when the result is a pointer to a function.
std::string_view withoutParameters(std::string_view text) {
    for (;;) {
        std::size_t at = text.rfind(')');
        if (at == std::string_view::npos) return {};
        int depth = 0;
        do {
            depth += text[at] == ')' ? 1 : text[at] == '(' ? -1 : 0;
        } while (depth > 0 && at-- > 0);
        if (depth > 0) return {};
        text = text.substr(0, at);
        if (!text.ends_with(')') || text.ends_with("operator()")) return text;
        text.remove_suffix(1);
    }
}

// The elements of a list in angle brackets, if the text is one and nothing else.
bool splitList(std::string_view text, std::vector<std::string>& elements) {
    int depth = 0;
    std::size_t start = 1;
    auto const add = [&](std::size_t end) {
        while (start < end && text[start] == ' ')
            ++start;
        while (end > start && text[end - 1] == ' ')
            --end;
        if (end == start) return;
        std::string& element = elements.emplace_back(text.substr(start, end - start));
        for (std::size_t gap = element.find("> >"); gap != std::string::npos; gap = element.find("> >"))
            element.erase(gap + 1, 1);
    };
    if (!text.starts_with('<')) return false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        depth += step(text[at]);
        if (depth == 0) {
            add(at);
            return at + 1 == text.size();
        }
        if (depth > 1 || text[at] != ',') continue;
        add(at);
        start = at + 1;
    }
    return false;
}

} // namespace

std::vector<std::string> readableArguments(std::string_view readable, std::string_view name) {
    std::string_view const text = withoutParameters(readable);
    for (std::size_t at = text.find(name); at != std::string_view::npos; at = text.find(name, at + 1)) {
        if (at == 0 || text[at - 1] != ':') continue;
        std::string_view list = text.substr(at + name.size());
        if (list.starts_with("[abi:")) list.remove_prefix(std::min(list.find(']') + 1, list.size()));
        if (list.starts_with(' ')) list.remove_prefix(1);
        std::vector<std::string> elements;
        if (splitList(list, elements)) return elements;
    }
    return {};
}

std::vector<std::string> mangledArguments(CXCursor function, std::string_view name) {
    if (name.empty() || isInTemplate(function)) return {};
    int status = 0;
    char* const text = abi::__cxa_demangle(mangledName(function).c_str(), nullptr, nullptr, &status);
    std::string const readable = status == 0 ? text : "";
    std::free(text);
    return readableArguments(readable, name);
}

} // namespace zelkor::producer
