// Loading and saving.

#include "Model.hpp"
#include "Texts.hpp"
#include "Types.hpp"
#include "ValueObject.hpp"

#include <brant/zero/Exceptions.hpp>
#include <brant/zero/Text.hpp>
#include <quorl/Factory.hpp>
#include <zelkor/ast/io.hpp>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace zelkor::python {

namespace {

using zelkor::ast::Ast;
using zelkor::ast::io::IoFormat;
constexpr char astClass[] = "internal.zelkor.ast.Ast";

/// The text forms differ in their first character, whatever the encoding and blanks before it.
IoFormat formatOf(std::string_view text) {
    auto const isPadding = [](char c) {
        return c == '\0' || c == ' ' || c == '\t' || c == '\r' || c == '\n' ||
               (static_cast<unsigned char>(c) & 0x80) != 0;
    };
    auto const first = std::find_if_not(text.begin(), text.end(), isPadding);
    return first != text.end() && *first == '<' ? IoFormat::xml : IoFormat::json;
}

IoFormat formatNamed(py::handle format) {
    std::string const name = py::isinstance<py::str>(format) ? format.cast<std::string>()
                             : py::hasattr(format, "name")   ? format.attr("name").cast<std::string>()
                                                             : "";
    if (name == "json") return IoFormat::json;
    if (name == "xml") return IoFormat::xml;
    fail("InvalidArgument", "the format is 'json' or 'xml', not " + py::repr(format).cast<std::string>());
}

py::object astObject(Ast ast) {
    quorl::QuorlClass* const quorlClass = quorl::QuorlClass::getClass(astClass);
    quorl::ObjectRef const object = quorl::QuorlObject::allocate(*quorlClass);
    void* const body = object->getSelfPointer();
    new (body) Ast(std::move(ast));
    quorl::factory::CopyableSupport::removeFromUnconstructedSet(body);
    return owned(wrapValue(object));
}

/// \returns what is to be saved: an `Ast`, or the model that the object stands for.
Ast astOf(py::handle object) {
    if (quorl::QuorlObject* const held = valueObject(object.ptr()))
        if (held->isValid() && held->getQuorlClass().getName().text() == astClass)
            return *static_cast<Ast const*>(held->getSelfPointer());
    return Ast(modelOf(object.ptr(), "save"));
}

py::object load(py::handle path) {
    std::u16string const name = textOf(path.ptr(), "load: the path");
    std::string const file = brant::zero::toUtf8(name);
    std::optional<Ast> ast;
    {
        Unlocked const unlocked{Model()};
        std::ifstream stream(file, std::ios::binary);
        char head[64] = {};
        stream.read(head, sizeof head);
        std::string_view const start(head, static_cast<std::size_t>(stream.gcount()));
        // What cannot be read a second time, such as a pipe, is read here; the library tells why a file
        // cannot be read.
        bool const rereadable = stream.gcount() == 0 || (stream.clear(), stream.seekg(0), stream.good());
        if (rereadable) {
            stream.close();
            ast = zelkor::ast::io::deserializeFromFile(name, formatOf(start));
        } else {
            stream.clear();
            std::string text(start);
            text.append(std::istreambuf_iterator<char>(stream), {});
            ast = zelkor::ast::io::deserializeFromUTF8String(text, formatOf(start));
        }
    }
    return astObject(std::move(*ast));
}

py::object loads(py::handle text) {
    std::string const bytes = bytesOf(text.ptr(), "loads: the text");
    std::optional<Ast> ast;
    {
        Unlocked const unlocked{Model()};
        ast = zelkor::ast::io::deserializeFromUTF8String(bytes, formatOf(bytes));
    }
    return astObject(std::move(*ast));
}

void save(py::handle object, py::handle path, py::handle format) {
    std::u16string const name = textOf(path.ptr(), "save: the path");
    IoFormat const wanted = !format.is_none()         ? formatNamed(format)
                            : name.ends_with(u".xml") ? IoFormat::xml
                                                      : IoFormat::json;
    Ast ast = astOf(object);
    Unlocked const unlocked(ast.getModel());
    zelkor::ast::io::serializeToFile(ast, name, wanted);
}

py::object dumps(py::handle object, py::handle format) {
    IoFormat const wanted = formatNamed(format);
    Ast ast = astOf(object);
    std::string text;
    {
        Unlocked const unlocked(ast.getModel());
        text = zelkor::ast::io::serializeToUTF8String(ast, wanted);
    }
    return owned(toPython(text));
}

} // namespace

void initIo(py::module_& module) {
    module.def("load", load, py::arg("path"),
               "Reads a saved model, JSON or XML by its content. Returns an Ast.");
    module.def("loads", loads, py::arg("text"), "The same from a str, or from bytes in UTF-8.");
    module.def("save", save, py::arg("ast"), py::arg("path"), py::arg("format") = py::none(),
               "Writes a model to a file; XML when the name ends in .xml, else JSON, unless told.");
    module.def("dumps", dumps, py::arg("ast"), py::arg("format") = "json", "The same as a text.");
}

} // namespace zelkor::python
