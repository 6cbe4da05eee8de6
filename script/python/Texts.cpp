#include "Texts.hpp"

#include <brant/zero/Text.hpp>

#include <algorithm>
#include <cctype>

namespace zelkor::python {

namespace {

bool isUpper(char c) {
    return std::isupper(static_cast<unsigned char>(c)) != 0;
}
bool isLower(char c) {
    return std::islower(static_cast<unsigned char>(c)) != 0;
}

bool beginsWord(std::string_view name, std::size_t i) {
    if (i == 0 || !isUpper(name[i]) || name[i - 1] == '_') return false;
    if (!isUpper(name[i - 1])) return true;
    return i + 1 < name.size() && isLower(name[i + 1]);
}

bool isKeyword(std::string const& word) {
    return py::module_::import("keyword").attr("iskeyword")(word).cast<bool>();
}

/// \returns the value itself, or the text of a path; null for all else.
py::object textOrPath(PyObject* value) {
    if (PyUnicode_Check(value) || PyBytes_Check(value)) return py::reinterpret_borrow<py::object>(value);
    if (!PyObject_HasAttrString(value, "__fspath__")) return {};
    return owned(PyOS_FSPath(value));
}

} // namespace

std::string identifier(std::string name) {
    if (isKeyword(name)) name += '_';
    return name;
}

std::string snakeCase(std::string_view name) {
    std::string result;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (beginsWord(name, i)) result += '_';
        result += static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
    }
    return identifier(std::move(result));
}

std::string pythonName(std::string_view hostName) {
    for (auto const& [prefix, shown] :
         {std::pair<std::string_view, std::string_view>{"internal.zelkor", "zelkor"},
          {"brant.zero", "zelkor"}})
        if (hostName.starts_with(prefix) &&
            (hostName.size() == prefix.size() || hostName[prefix.size()] == '.'))
            return std::string(shown) + std::string(hostName.substr(prefix.size()));
    return std::string(hostName);
}

PyObject* toPython(std::string const& text) {
    PyObject* const result = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), nullptr);
    if (result != nullptr) return result;
    if (PyErr_ExceptionMatches(PyExc_UnicodeDecodeError) == 0) throw py::error_already_set();
    PyErr_Clear();
    return checked(PyBytes_FromStringAndSize(text.data(), static_cast<Py_ssize_t>(text.size())));
}

PyObject* toPython(std::u16string const& text) {
    auto const isSurrogate = [](char16_t unit) { return (unit & 0xF800) == 0xD800; };
    if (std::none_of(text.begin(), text.end(), isSurrogate))
        return checked(PyUnicode_FromKindAndData(PyUnicode_2BYTE_KIND, text.data(),
                                                 static_cast<Py_ssize_t>(text.size())));
    int order = -1; // little-endian: no byte order mark is looked for
    return checked(PyUnicode_DecodeUTF16(reinterpret_cast<char const*>(text.data()),
                                         static_cast<Py_ssize_t>(text.size() * sizeof(char16_t)),
                                         "surrogatepass", &order));
}

std::string bytesOf(PyObject* value, std::string const& where) {
    py::object const text = textOrPath(value);
    if (!text) failType(where, "str", value);
    if (PyBytes_Check(text.ptr()))
        return {PyBytes_AS_STRING(text.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(text.ptr()))};
    Py_ssize_t size = 0;
    char const* const data = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
    if (data != nullptr) return {data, static_cast<std::size_t>(size)};
    PyErr_Clear();
    fail("InvalidText", where + ": the text has a lone surrogate, which UTF-8 cannot express; give bytes");
}

std::u16string textOf(PyObject* value, std::string const& where) {
    py::object text = textOrPath(value);
    if (!text || PyBytes_Check(text.ptr())) failType(where, "str", value);
    py::object const units = owned(PyUnicode_AsEncodedString(text.ptr(), "utf-16-le", "surrogatepass"));
    std::size_t const size = static_cast<std::size_t>(PyBytes_GET_SIZE(units.ptr()));
    std::u16string result(size / sizeof(char16_t), u'\0');
    std::copy_n(PyBytes_AS_STRING(units.ptr()), size, reinterpret_cast<char*>(result.data()));
    return result;
}

std::string suggestion(std::string const& name, py::list const& names) {
    py::list const near = py::module_::import("difflib").attr("get_close_matches")(name, names, 1);
    return near.empty() ? std::string() : "; did you mean '" + near[0].cast<std::string>() + "'?";
}

} // namespace zelkor::python
