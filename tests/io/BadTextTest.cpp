#include "io/TextSupport.hpp"

#include <brant/zero/io/Parser.hpp>
#include <gtest/gtest.h>

#include <regex>

namespace {

using namespace zelkor::test;
using namespace std::string_literals;

/// A text that must be refused, and what the refusal must say, place included.
struct Bad {
    char const* name;
    IoFormat format;
    std::string text;
    std::string says;
};

constexpr IoFormat J = IoFormat::json;
constexpr IoFormat X = IoFormat::xml;

std::string j(std::string_view rest, std::string_view name = "Function") {
    return jsonDocument(jsonElement(name, 1, rest));
}
std::string x(std::string_view rest, std::string_view name = "Function") {
    return xmlDocument(xmlElement(name, 1, rest));
}

std::vector<Bad> structureCases() {
    std::string const f1 = jsonElement("Function", 1);
    std::string const g1 = xmlElement("Function", 1);
    return {
        {"empty", J, "", "1:1: error: the text is empty; expected a model"},
        {"empty", X, "", "1:1: error: the text is empty; expected <model>"},
        {"blank", J, " \n ", "2:2: error: the document is empty"},
        {"no object", J, "[]", "1:1: error: the text is no model; expected an object"},
        {"no object", J, "\"x\"", "1:1: error: the text is no model"},
        {"wrong root", X, "<module/>", "1:1: error: the root element is <module>; expected <model>"},
        {"wrong format", J, R"({"format":"other"})",
         "the format 'other' is not known; expected 'zelkor-ast'"},
        {"wrong format", X, R"(<model format="other" version="1.0"/>)", "the format 'other' is not known"},
        {"no format", J, R"({"version":"1.0"})", "expected the member 'format'"},
        {"no format", X, R"(<model version="1.0"/>)", "expected the attribute 'format'"},
        {"no version", J, R"({"format":"zelkor-ast","elements":[]})", "expected the member 'version'"},
        {"no version", X, R"(<model format="zelkor-ast"/>)", "expected the attribute 'version'"},
        {"version no text", J, R"({"format":"zelkor-ast","version":1.0,"elements":[]})", "expected a string"},
        {"bad version", J, jsonDocument("", "one"), "'one' is no version"},
        {"bad version", X, xmlDocument("", "1.0.0"), "'1.0.0' is no version"},
        {"no elements", J, R"({"format":"zelkor-ast","version":"1.0"})", "expected the member 'elements'"},
        {"elements no list", J, R"({"format":"zelkor-ast","version":"1.0","elements":{}})",
         "expected an array"},
        {"more members", J, R"({"format":"zelkor-ast","version":"1.0","elements":[],"more":1})",
         "a document has no member 'more'"},
        {"member twice", J, R"({"format":"zelkor-ast","version":"1.0","elements":[],"version":"1.0"})",
         "stands in a wrong place or twice"},
        {"more attributes", X, R"(<model format="zelkor-ast" version="1.0" more="1"/>)",
         "has no attribute 'more'"},
        {"attribute twice", X, R"(<model format="zelkor-ast" version="1.0" version="1.0"/>)",
         "duplicate attribute"},
        {"trailing text", J, jsonDocument("") + "x",
         "3:1: error: the document root must not be followed by other values"},
        {"trailing document", J, jsonDocument("") + jsonDocument(""), "must not be followed by other values"},
        {"trailing zero", J, jsonDocument("") + "\0"s, "a zero character stands in the text"},
        {"trailing text", X, xmlDocument("") + "x", "4:1: error: something follows the root element"},
        {"trailing element", X, xmlDocument("") + "<x/>", "something follows the root element"},
        {"cut short", J, jsonDocument(f1).substr(0, 65), "missing a closing quotation mark in string"},
        {"cut short", J, jsonDocument(f1).substr(0, 53), "2:2: error: missing a name for object member"},
        {"cut short", X, xmlDocument(g1).substr(0, 100), "no well-formed XML: unclosed token"},
        {"no comma", J, jsonDocument(f1 + jsonElement("Function", 2)),
         "2:67: error: missing a comma or ']' after an array element"},
        {"crossed tags", X, xmlDocument("<Scope uuid=\"" + id(1) + "\"><Symbols></Scope></Symbols>"),
         "mismatched tag"},
        {"no UTF-8", J, j(",\"Name\":\"\xff\""), "2:75: error: the text is no valid UTF-8 here"},
        {"no UTF-8", X, x(" Name=\"\xff\"/>"), "not well-formed"},
        {"surrogate bytes", J, j(",\"Name\":\"\xed\xa0\x80\""), "the text is no valid UTF-8 here"},
        {"control character", J, j(",\"Name\":\"a\nb\""),
         "2:76: error: a control character stands in a string"},
        {"control character", X, x(" Name=\"\x01\"/>"), "not well-formed"},
        {"bad escape", J, j(R"(,"Name":"\x")"), "invalid escape character in string"},
        {"bad unicode escape", J, j(R"(,"Name":"\u12g4")"), "incorrect hex digit after \\u escape"},
        {"unknown entity", X, x(" Name=\"&eacute;\"/>"), "undefined entity"},
        {"bad character reference", X, x(" Name=\"&#0;\"/>"), "reference to invalid character number"},
        {"document type", X, "<!DOCTYPE model>" + xmlDocument("").substr(39),
         "a document type declaration is not accepted"},
        {"entity bomb", X,
         "<!DOCTYPE m [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]><model format=\"&b;\" version=\"1.0\"/>",
         "1:13: error: a document type declaration is not accepted"},
        {"text between elements", X, xmlDocument("text"), "3:1: error: text stands between elements"},
    };
}

std::vector<Bad> elementCases() {
    std::string const scope = R"(,"Symbols":[)";
    return {
        {"unknown class", J, j("", "Functoin"),
         "NoSuchType: There is no type 'Functoin'.; did you mean 'Function'?"},
        {"unknown class", X, x("/>", "PointerType"), "did you mean 'types.PointerType'?"},
        {"class of meta objects", J, j("", "Property"), "NoSuchType"},
        {"abstract class", J, j("", "Symbol"), "the class 'Symbol' is abstract"},
        {"abstract class", X, x("/>", "Symbol"), "the class 'Symbol' is abstract"},
        {"class not first", J, jsonDocument(R"({"uuid":"x","class":"Function"})"),
         "expected the member 'class'"},
        {"class no text", J, jsonDocument(R"({"class":1})"), "expected a string"},
        {"no identity", J, jsonDocument(R"({"class":"Function","Name":"f"})"), "expected the member 'uuid'"},
        {"no identity", J, jsonDocument(R"({"class":"Function"})"), "expected the member 'uuid'"},
        {"no identity", X, xmlDocument("<Function Name=\"f\"/>"), "expected the attribute 'uuid'"},
        {"bad identity", J, jsonDocument(R"({"class":"Function","uuid":"12"})"),
         "'12' is no identity; expected a UUID such as"},
        {"bad identity", X, xmlDocument("<Function uuid=\"{" + id(1) + "}\"/>"), "is no identity"},
        {"nil identity", J,
         jsonDocument(R"({"class":"Function","uuid":"00000000-0000-0000-0000-000000000000"})"),
         "the nil UUID"},
        {"identity twice", J, jsonDocument(jsonElement("Function", 1) + ",\n" + jsonElement("Scope", 1)),
         "3:25: error: the identity " + id(1) + " is that of an earlier element"},
        {"identity twice", X, xmlDocument(xmlElement("Function", 1) + "\n" + xmlElement("Scope", 1)),
         "4:1: error: the identity " + id(1) + " is that of an earlier element"},
        {"class twice", J, j(R"(,"class":"Function")"), "the member 'class' stands twice"},
        {"empty object", J, jsonDocument("{}"), "the object is empty; expected the member 'class'"},
        {"no element", J, jsonDocument("1"), "a value stands where an element belongs"},
        {"null element", J, jsonDocument("null"), "a value stands where an element belongs"},
        {"list of lists", J, jsonDocument("[]"), "an array stands where none can be; expected an element"},
        {"placeholder at the top", J, jsonDocument(R"({"proxy":"Function","element":"x"})"),
         "expected the member 'class'"},
        {"unknown property", J, j(R"(,"Nmae":"f")"),
         "NoSuchProperty: There is no property 'Nmae' in 'Function'.; did you mean 'Name'?"},
        {"unknown property", X, x(" Nmae=\"f\"/>"), "did you mean 'Name'?"},
        {"unknown property element", X, x("><Parms/></Function>"), "did you mean 'Params'?"},
        {"property twice", J, j(R"(,"Name":"f","Name":"f")"),
         "the property 'Name' stands twice in one element"},
        {"property twice", X, x(" Name=\"f\"><Name>f</Name></Function>"), "the property 'Name' stands twice"},
        {"list twice", X, x("><Params/><Params/></Function>"), "the property 'Params' stands twice"},
        {"container end", J, j(R"(,"OwningScope":")" + id(1) + "\""), "is the owner of the element"},
        {"container end", X, x(" OwningScope=\"" + id(1) + "\"/>"), "is the owner of the element"},
        {"derived", J, j(R"(,"IsTemplate":true)"),
         "the property 'IsTemplate' is computed and stands in no text"},
        {"view", J, j(R"(,"Types":[])", "Scope"), "the property 'Types' is computed"},
        {"view", X, x("><Types/></Scope>", "Scope"), "the property 'Types' is computed"},
        {"misfit", J, j(scope + jsonElement("Scope", 2) + "]", "Scope"),
         "CannotAddIncompatibleTypes: an element of type 'Scope' cannot stand in 'Scope.Symbols'; expected a "
         "Symbol"},
        {"misfit", X, x("><Symbols>" + xmlElement("Scope", 2) + "</Symbols></Scope>", "Scope"),
         "CannotAddIncompatibleTypes"},
        {"element in a reference", J, j(R"(,"Type":)" + jsonElement("types.VoidType", 2)),
         "which contains none"},
        {"element in a reference", X, x("><Type>" + xmlElement("types.VoidType", 2) + "</Type></Function>"),
         "which contains none"},
        {"two single children", X,
         x("><Scope>" + xmlElement("Scope", 2) + xmlElement("Scope", 3) + "</Scope></Function>"),
         "has a second value"},
        {"no child", X, x("><Scope/></Function>"), "has no value"},
        {"list for one", J, j(R"(,"Scope":[])"), "an array stands where none can be; expected one value"},
        {"one for a list", J, j(R"(,"Params":)" + jsonElement("Variable", 2)), "expected an array"},
        {"one value for a list", J, j(R"(,"Comments":"x")"), "expected an array"},
        {"attribute for a list", X, x(" Comments=\"x\"/>"), "is an attribute; expected an element"},
        {"list in a list", J, j(R"(,"Comments":[[]])"), "an array stands where none can be"},
        {"key twice", J,
         jsonDocument(jsonElement("Project", 1,
                                  ",\"Files\":[" + jsonElement("source.SourceFile", 2, ",\"Path\":\"a\"") +
                                      "," + jsonElement("source.SourceFile", 3, ",\"Path\":\"a\"") + "]")),
         "UniquenessConstraint: another element of 'Project.Files' has the Path 'a'"},
        {"key twice", X,
         xmlDocument(xmlElement("Project", 1, "><Files>") +
                     xmlElement("source.SourceFile", 2, " Path=\"a\"/>") +
                     xmlElement("source.SourceFile", 3, " Path=\"a\"/>") + "</Files></Project>"),
         "UniquenessConstraint"},
        {"reference in a map", J, j(",\"Files\":[\"" + id(1) + "\"]", "Project"),
         "holds only what it contains"},
        {"placeholder of a misfit", J, j(R"(,"Type":{"proxy":"Scope","element":"x"})"),
         "CannotAddIncompatibleTypes"},
        {"placeholder of a misfit", X, x("><Type><proxy class=\"Scope\" element=\"x\"/></Type></Function>"),
         "CannotAddIncompatibleTypes"},
        {"placeholder without target", J, j(R"(,"Type":{"proxy":"types.VoidType"})"),
         "expected the member 'element'"},
        {"placeholder without target", X, x("><Type><proxy class=\"types.VoidType\"/></Type></Function>"),
         "expected the attribute 'element'"},
        {"placeholder without class", X, x("><Type><proxy element=\"x\"/></Type></Function>"),
         "names no class"},
        {"placeholder for a value", J, j(R"(,"Name":{"proxy":"Function","element":"x"})"),
         "refers to no elements"},
        {"part of a placeholder twice", J,
         j(R"(,"Type":{"proxy":"types.VoidType","element":"x","element":"x"})"),
         "stands twice in a placeholder"},
        {"external child", J, j(R"(,"Params":[{"proxy":"Nothing","element":"x"}])"), "NoSuchType"},
    };
}

std::vector<Bad> valueCases() {
    std::string const number = "; expected a number from 0 to 4294967295";
    std::string const position = "source.SourcePosition";
    return {
        {"too large", J, j(R"(,"Line":4294967296)", position),
         "out of range for the property 'source.SourcePosition.Line'" + number},
        {"too large", X, x(" Line=\"4294967296\"/>", position), "out of range"},
        {"negative", J, j(R"(,"Line":-1)", position), "out of range"},
        {"negative", X, x(" Line=\"-1\"/>", position), "out of range"},
        {"fraction", J, j(R"(,"Line":1.5)", position), "'1.5' is no whole number"},
        {"exponent", J, j(R"(,"Line":1e3)", position), "'1e3' is no whole number"},
        {"huge", J, j(R"(,"Line":1)" + std::string(400, '0'), position), "number too big"},
        {"text for a number", J, j(R"(,"Line":"1")", position), "expected a number"},
        {"words for a number", X, x(" Line=\"one\"/>", position), "is no whole number"},
        {"blank in a number", X, x(" Line=\" 1\"/>", position), "is no whole number"},
        {"sign", X, x(" Line=\"+1\"/>", position), "is no whole number"},
        {"leading zero", J, j(R"(,"Line":01)", position), "missing a comma or '}'"},
        {"too small", J, j(R"(,"Dimensions":[-2147483649])", "types.ArrayType"), "out of range"},
        {"list of numbers", X,
         x("><Dimensions><item>x</item></Dimensions></types.ArrayType>", "types.ArrayType"),
         "is no whole number"},
        {"number for a text", J, j(R"(,"Name":1)"), "expected a text"},
        {"null", J, j(R"(,"Name":null)"), "'null' is no value for the property 'Function.Name'"},
        {"null reference", J, j(R"(,"Type":null)"), "expected a reference by UUID"},
        {"word for a truth", X, x(" IsInline=\"1\"/>"), "expected true or false"},
        {"text for a truth", J, j(R"(,"IsInline":"true")"), "expected true or false"},
        {"number for a truth", J, j(R"(,"IsInline":1)"), "expected true or false"},
        {"unknown literal", J, j(R"(,"SpecialKind":"Constructer")"), "did you mean 'Constructor'?"},
        {"literal in other case", X, x(" SpecialKind=\"constructor\"/>"),
         "is no literal of the enumeration SpecialFunctionKind"},
        {"literal by number", J, j(R"(,"SpecialKind":1)"), "expected the name of a literal"},
        {"bad reference", J, j(R"(,"Type":"int")"), "'int' is no identity"},
        {"bad reference", X, x("><Params><ref uuid=\"x\"/></Params></Function>"), "'x' is no identity"},
        {"reference without target", X, x("><Params><ref/></Params></Function>"),
         "the reference names no target"},
        {"dangling", J, jsonDocument("\n" + jsonElement("Function", 1, ",\"Type\":\"" + id(7) + "\"")),
         "3:74: error: 'Function.Type' refers to " + id(7) + ", which the text does not hold"},
        {"dangling", X, xmlDocument("\n" + xmlElement("Function", 1, " Type=\"" + id(7) + "\"/>")),
         "4:1: error: 'Function.Type' refers to " + id(7)},
        {"wrong target", J, j(",\"Type\":\"" + id(1) + "\""),
         "which is of the class 'Function'; expected an element of the class 'types.Type'"},
        {"wrong target", X, x(" Type=\"" + id(1) + "\"/>"), "which is of the class 'Function'"},
        {"wrong target in a list", J, j(",\"BefriendingAggregates\":[\"" + id(1) + "\"]"),
         "which is of the class 'Function'"},
        {"lone surrogate in bytes", J, j(R"(,"Name":"\ud800")"),
         "a lone surrogate stands in 'Function.Name'"},
        {"no base64", J, j(R"(,"Name":{"base64":"a"})"), "is no base64"},
        {"loose bits in base64", J, j(R"(,"Name":{"base64":"/x=="})"), "is no base64"},
        {"no base64", X, x("><Name encoding=\"base64\">*</Name></Function>"), "is no base64"},
        {"half a unit", J, j(R"(,"Text":{"base64":"/w=="})", "Comment"), "is no base64 of UTF-16LE"},
        {"base64 for a number", J, j(R"(,"Line":{"base64":""})", position),
         "which holds no text; expected a number"},
        {"more beside base64", J, j(R"(,"Name":{"base64":"","x":1})"), "has no other member"},
        {"unknown encoding", X, x("><Name encoding=\"hex\">ff</Name></Function>"),
         "the encoding 'hex' is not known"},
        {"unknown attribute", X, x("><Name size=\"1\">f</Name></Function>"), "has no attribute 'size'"},
        {"element in a text", X, x("><Name><b/></Name></Function>"), "stands where only text can"},
        {"wrong item", X, x("><Comments><Comment/></Comments></Function>"),
         "stands in a list of values; expected <item>"},
    };
}

void refuse(std::vector<Bad> const& cases) {
    for (Bad const& bad : cases) {
        SCOPED_TRACE(std::string(bad.name) + (bad.format == J ? " (JSON)" : " (XML)"));
        std::string const said = refusal(bad.text, bad.format);
        EXPECT_NE(said.find(bad.says), std::string::npos) << said;
        EXPECT_TRUE(std::regex_search(said, std::regex("^<string>:[1-9][0-9]*:[1-9][0-9]*: error: ")))
            << said;
    }
}

TEST(BadText, WrongStructureIsRefused) {
    refuse(structureCases());
}
TEST(BadText, WrongElementsAreRefused) {
    refuse(elementCases());
}
TEST(BadText, WrongValuesAreRefused) {
    refuse(valueCases());
}

/// Cutting a text anywhere, or changing any byte of it, gives a refusal or a model, never anything else.
TEST(BadText, DamagedTextsNeverDoHarm) {
    std::string const json = jsonDocument(
        jsonElement("Project", 1,
                    ",\"Files\":[" +
                        jsonElement("source.SourceFile", 2,
                                    R"(,"Path":"a\ud800\n","IncludedFileWrittenNames":["x"])") +
                        "]") +
        "," +
        jsonElement("Function", 3,
                    R"(,"NumOptionalParams":3,"Type":{"proxy":"types.VoidType","element":"x"})"));
    za::Ast const ast = load(json, J);
    for (IoFormat const format : {J, X}) {
        std::string const text = save(ast, format);
        for (std::size_t i = 0; i + 1 < text.size(); ++i) {
            EXPECT_NE(refusal(text.substr(0, i), format), "the text was read") << i;
            for (char const byte : {'\0', '"', '<', '\\', '\xff', ' '}) {
                std::string damaged = text;
                damaged[i] = byte;
                try {
                    EXPECT_FALSE(load(damaged, format).getModel().verify().has_value());
                } catch (ParseError const& error) {
                    EXPECT_GT(error.getLine(), 0u);
                }
            }
        }
    }
}

TEST(Versions, LaterMinorOnesAreReadAsFarAsTheyAreKnown) {
    struct Case {
        IoFormat format;
        std::string text;
        std::size_t warnings;
    };
    std::string const unknown =
        R"(,"New":{"deep":[{"class":"Later"},null,1e300]},"Newer":[[]],"Newest":true,"Name":"f")";
    std::vector<Case> const cases = {
        {J, jsonDocument(jsonElement("Function", 1, unknown), "1.7"), 3},
        {J,
         R"({"format":"zelkor-ast","version":"1.1","maker":{"name":"x"},"elements":[)" +
             jsonElement("Function", 1, ",\"Name\":\"f\"") + "]}",
         1},
        {X,
         xmlDocument(
             xmlElement("Function", 1, " New=\"1\" Name=\"f\"><Newer><deep>text</deep></Newer></Function>"),
             "1.1"),
         2},
        {X, xmlDocument(xmlElement("Function", 1, " Name=\"f\"/>"), "1.1\" maker=\"x"), 1},
    };
    for (Case const& each : cases) {
        SCOPED_TRACE(each.text);
        std::unique_ptr<brant::zero::io::Parser> parser;
        if (each.format == J)
            parser = std::make_unique<brant::zero::io::JSONParser>();
        else
            parser = std::make_unique<brant::zero::io::XmlParser>();
        za::MetaPackageZelkor_ast::getInstance();
        parser->parseString(each.text);
        auto const elements = parser->targetModel().getTopLevelElements();
        ASSERT_EQ(elements.size(), 1u);
        EXPECT_EQ(za::Function::cast(elements[0]).getName(), "f");
        ASSERT_EQ(parser->warnings().size(), each.warnings);
        EXPECT_TRUE(parser->warnings()[0].starts_with("<string>:")) << parser->warnings()[0];
        EXPECT_NE(parser->warnings()[0].find("It is skipped."), std::string::npos) << parser->warnings()[0];
        EXPECT_EQ(load(each.text, each.format).getModel().size(), 1u); // who does not ask is not told
    }
}

TEST(Versions, OtherwiseTheyAreRefused) {
    refuse({
        {"later major", J, jsonDocument("", "2.0"),
         "the text is of version 2.0, which this reader does not know; expected version 1.x"},
        {"later major", X, xmlDocument("", "2.0"), "the text is of version 2.0"},
        {"earlier major", J, jsonDocument("", "0.9"), "the text is of version 0.9"},
        {"unknown class in a later minor one", J, jsonDocument(jsonElement("Later", 1), "1.1"), "NoSuchType"},
        {"unknown class in a later minor one", X, xmlDocument(xmlElement("Later", 1), "1.1"), "NoSuchType"},
        {"derived in a later minor one", J,
         jsonDocument(jsonElement("Function", 1, R"(,"IsTemplate":true)"), "1.1"), "is computed"},
    });
}

TEST(Accepted, WhatNeedNotBeWrittenButMayStand) {
    std::vector<std::pair<IoFormat, std::string>> const texts = {
        {J, " { \"format\" : \"zelkor-ast\" ,\r\n\"version\":\"1.0\",\t\"elements\": [ " +
                jsonElement("Function", 1, R"( , "IsInline" : false, "Comments":[], "Name":"\u0066\/")") +
                " ] } "},
        {X,
         "<?xml version='1.0'?><!-- c --><p:model xmlns:p='u' format='zelkor-ast' version='1.0'><?pi?> \n" +
             xmlElement("p:Function", 1,
                        " xml:space='preserve' "
                        "IsInline=\"false\"><Comments/><Name>f<![CDATA[/]]></Name></p:Function>") +
             "</p:model>"},
        {X, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><model version=\"1.0\" format=\"zelkor-ast\">" +
                xmlElement("Function", 1, " Name=\"f/\"/>") + "</model>"},
        {J,
         jsonDocument(
             R"({"class":"Function","uuid":"00000000-0000-4000-8000-000000000001","Name":{"base64":"Zi8="}})")},
    };
    for (auto const& [format, text] : texts) {
        SCOPED_TRACE(text);
        za::Ast const ast = load(text, format);
        EXPECT_EQ(save(ast, J), jsonDocument(jsonElement("Function", 1, R"(,"Name":"f/")")));
    }
}

} // namespace
