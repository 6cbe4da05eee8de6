// Reading XML: Expat tells tokens, the states here give them their place in a model.

#include "ModelReader.hpp"
#include "NearName.hpp"
#include "TextSource.hpp"

#include <algorithm>
#include <exception>
#include <span>
#include <vector>

#include <expat.h>

namespace brant::zero::io {

namespace {

/// What the innermost open element is.
enum class In : std::uint8_t {
    Document,
    Element,
    Property, ///< of values or elements: they are its children
    Text,     ///< of a property or of one of its items
    Leaf,     ///< a reference: it has no content
    Proxy,
    ProxyPart,
    Skipped
};

std::string_view localName(char const* name) noexcept {
    std::string_view const whole = name;
    std::size_t const colon = whole.find(':');
    return colon == std::string_view::npos ? whole : whole.substr(colon + 1);
}

std::string tag(std::string_view name) {
    return std::string("<").append(name).append(">");
}

struct Attribute {
    std::string_view name;
    std::string_view value;
};
using Attributes = std::span<Attribute const>;

/// Where the lines of the text begin, counted as its portions come in. Expat counts them as well, but byte by
/// byte, which takes a fifth of the time of reading.
class Lines {
  public:
    void take(std::string_view portion) {
        if (taken_ == 0) counts_ = !isWide(portion.substr(0, 4));
        if (!counts_) return;
        ends_.erase(ends_.begin(), ends_.begin() + static_cast<std::ptrdiff_t>(next_));
        next_ = 0;
        for (std::size_t at = 0; (at = portion.find('\n', at)) != std::string_view::npos; ++at)
            ends_.push_back(taken_ + at);
        taken_ += portion.size();
    }
    /// \returns false for an encoding whose line ends cannot be told from its bytes.
    [[nodiscard]] bool counts() const noexcept { return counts_; }
    /// \requires that places are asked for in their order.
    [[nodiscard]] Position at(std::uint64_t byte) noexcept {
        for (; next_ < ends_.size() && ends_[next_] < byte; ++next_) {
            ++line_;
            begin_ = ends_[next_] + 1;
        }
        return {line_, static_cast<std::uint32_t>(byte - begin_ + 1)};
    }

  private:
    static bool isWide(std::string_view begin) noexcept {
        return begin.starts_with("\xFE\xFF") || begin.starts_with("\xFF\xFE") ||
               begin.find('\0') != std::string_view::npos;
    }

    std::vector<std::uint64_t> ends_; ///< of the lines in the last portions
    std::size_t next_ = 0;
    std::uint64_t taken_ = 0;
    std::uint64_t begin_ = 0; ///< of the present line
    std::uint32_t line_ = 1;
    bool counts_ = true;
};

class Handler final : public Locator {
  public:
    Handler(ModelReader& reader, XML_Parser parser) : reader_(reader), parser_(parser) {
        reader.locateBy(*this);
        XML_SetUserData(parser, this);
        XML_SetElementHandler(
            parser,
            [](void* self, char const* name, char const** pairs) {
                guarded(self, &Handler::begin, name, pairs);
            },
            [](void* self, char const*) { guarded(self, &Handler::end); });
        XML_SetCharacterDataHandler(parser, [](void* self, char const* text, int size) {
            guarded(self, &Handler::characters, text, size);
        });
        XML_SetStartDoctypeDeclHandler(parser, [](void* self, char const*, char const*, char const*, int) {
            guarded(self, &Handler::doctype);
        });
    }

    [[nodiscard]] std::exception_ptr failure() const noexcept { return failure_; }

    Position position() override {
        if (lines_.counts()) return lines_.at(static_cast<std::uint64_t>(XML_GetCurrentByteIndex(parser_)));
        return {static_cast<std::uint32_t>(XML_GetCurrentLineNumber(parser_)),
                static_cast<std::uint32_t>(XML_GetCurrentColumnNumber(parser_) + 1)};
    }
    [[nodiscard]] Lines& lines() noexcept { return lines_; }

  private:
    /// No exception may pass through the library: it is kept, and parsing ends.
    template <class... Parameters, class... Arguments>
    static void guarded(void* self, void (Handler::*handle)(Parameters...), Arguments... arguments) {
        auto& handler = *static_cast<Handler*>(self);
        if (handler.failure_ != nullptr) return;
        try {
            (handler.*handle)(arguments...);
        } catch (...) {
            handler.failure_ = std::current_exception();
            XML_StopParser(handler.parser_, XML_FALSE);
        }
    }

    void doctype() { reader_.fail("a document type declaration is not accepted"); }

    void begin(char const* qualified, char const** pairs) {
        reader_.enterLevel();
        std::string_view const name = localName(qualified);
        Attributes const attributes = collect(pairs);
        if (in_.empty()) return beginDocument(name, attributes);
        switch (in_.back()) {
        case In::Document:
            return beginElement(name, attributes);
        case In::Element:
            return beginProperty(name, attributes);
        case In::Property:
            return beginInProperty(name, attributes);
        case In::Proxy:
            return beginProxyPart(name, attributes);
        case In::Skipped:
            return in_.push_back(In::Skipped);
        default:
            reader_.fail("the element " + tag(name) + " stands where only text can",
                         "the end of the element");
        }
    }

    /// \returns the attributes that belong to this format.
    Attributes collect(char const** pairs) {
        attributes_.clear();
        for (; *pairs != nullptr; pairs += 2)
            if (std::string_view const name = pairs[0];
                name.find(':') == std::string_view::npos && name != "xmlns")
                attributes_.push_back({name, pairs[1]});
        return attributes_;
    }

    void beginDocument(std::string_view name, Attributes attributes) {
        if (name != "model") reader_.fail("the root element is " + tag(name), "<model>");
        in_.push_back(In::Document);
        std::string_view format;
        std::string_view version;
        bool hasFormat = false;
        bool hasVersion = false;
        for (Attribute const& attribute : attributes)
            if (attribute.name == "format") {
                format = attribute.value;
                hasFormat = true;
            } else if (attribute.name == "version") {
                version = attribute.value;
                hasVersion = true;
            }
        if (!hasFormat) reader_.fail("the root element does not name its format", "the attribute 'format'");
        reader_.checkFormat(format);
        if (!hasVersion)
            reader_.fail("the root element does not name its version", "the attribute 'version'");
        reader_.checkVersion(version);
        for (Attribute const& attribute : attributes)
            if (attribute.name != "format" && attribute.name != "version")
                refuseAttribute("model", attribute.name);
    }

    /// An attribute of a later version is skipped.
    void refuseAttribute(std::string_view element, std::string_view name) {
        std::string const message = tag(element) + " has no attribute " + quote(name);
        if (!reader_.skipsUnknown()) reader_.fail(message);
        reader_.warn(message + ". It is skipped.");
    }

    void beginElement(std::string_view name, Attributes attributes) {
        ReadPlan const& plan = reader_.classNamed(name);
        auto const identity = std::find_if(attributes.begin(), attributes.end(),
                                           [](Attribute const& each) { return each.name == "uuid"; });
        if (identity == attributes.end())
            reader_.fail("the element " + tag(name) + " has no identity", "the attribute 'uuid'");
        reader_.beginElement(plan, identity->value);
        in_.push_back(In::Element);
        for (Attribute const& attribute : attributes) {
            if (attribute.name == "uuid") continue;
            ReadField const* field = reader_.beginProperty(attribute.name);
            if (field == nullptr) continue;
            if (field->step > Step::Reference)
                reader_.fail("the property " + quote(attribute.name) + " is an attribute", "an element");
            reader_.value(attribute.value, Spelling::Plain);
        }
    }

    void beginProperty(std::string_view name, Attributes attributes) {
        ReadField const* field = reader_.beginProperty(name);
        if (field == nullptr) return in_.push_back(In::Skipped);
        if (field->step < Step::Reference) return beginText(name, attributes);
        noAttributes(name, attributes);
        in_.push_back(In::Property);
    }

    void beginText(std::string_view name, Attributes attributes) {
        text_.clear();
        encoded_ = false;
        for (Attribute const& attribute : attributes) {
            if (attribute.name != "encoding")
                refuseAttribute(name, attribute.name);
            else if (attribute.value != "base64")
                reader_.fail("the encoding " + quote(attribute.value) + " is not known", "'base64'");
            else
                encoded_ = true;
        }
        in_.push_back(In::Text);
    }

    void noAttributes(std::string_view element, Attributes attributes) {
        for (Attribute const& attribute : attributes)
            refuseAttribute(element, attribute.name);
    }

    void beginInProperty(std::string_view name, Attributes attributes) {
        Step const step = reader_.field().step;
        bool const values =
            step == Step::IntegerList || step == Step::StringList || step == Step::StdStringList;
        if (name == "ref" && !values) return beginReference(attributes);
        if (name == "proxy" && !values) return beginProxy(attributes);
        if (name == "item" && values) return beginText(name, attributes);
        if (values) reader_.fail("the element " + tag(name) + " stands in a list of values", "<item>");
        beginElement(name, attributes);
    }

    void beginReference(Attributes attributes) {
        bool found = false;
        for (Attribute const& attribute : attributes)
            if (attribute.name != "uuid") {
                refuseAttribute("ref", attribute.name);
            } else {
                reader_.reference(attribute.value);
                found = true;
            }
        if (!found) reader_.fail("the reference names no target", "the attribute 'uuid'");
        in_.push_back(In::Leaf);
    }

    void beginProxy(Attributes attributes) {
        proxy_ = {};
        proxyParts_ = 0;
        proxyPlan_ = nullptr;
        for (Attribute const& attribute : attributes)
            if (attribute.name == "class")
                proxyPlan_ = &reader_.classNamed(attribute.value);
            else if (unsigned const part = partNamed(attribute.name); part < parts)
                setProxyPart(part, reader_.wide(attribute.value));
            else
                refuseAttribute("proxy", attribute.name);
        if (proxyPlan_ == nullptr) reader_.fail("the placeholder names no class", "the attribute 'class'");
        in_.push_back(In::Proxy);
    }

    static constexpr unsigned parts = 3;
    static unsigned partNamed(std::string_view name) noexcept {
        constexpr std::string_view names[parts] = {"model", "element", "external"};
        unsigned part = 0;
        while (part < parts && name != names[part])
            ++part;
        return part;
    }

    void setProxyPart(unsigned part, std::u16string text) {
        if ((proxyParts_ & 1u << part) != 0) reader_.fail("a part of the placeholder stands twice");
        proxyParts_ |= 1u << part;
        if (part == 2)
            proxy_.external = std::make_shared<std::u16string>(std::move(text));
        else
            (part == 0 ? proxy_.model : proxy_.element) = std::move(text);
    }

    void beginProxyPart(std::string_view name, Attributes attributes) {
        part_ = partNamed(name);
        if (part_ == parts)
            reader_.fail("a placeholder has no part " + quote(name), "'model', 'element' or 'external'");
        beginText(name, attributes);
        in_.back() = In::ProxyPart;
    }

    void characters(char const* text, int size) {
        std::string_view const piece(text, static_cast<std::size_t>(size));
        if (in_.back() == In::Text || in_.back() == In::ProxyPart)
            text_.append(piece);
        else if (in_.back() != In::Skipped && piece.find_first_not_of(" \t\r\n") != std::string_view::npos)
            reader_.fail("text stands between elements", "an element");
    }

    void end() {
        reader_.leaveLevel();
        In const in = in_.back();
        in_.pop_back();
        switch (in) {
        case In::Element:
            return reader_.endElement();
        case In::Property:
            return reader_.endProperty();
        case In::Text:
            return encoded_ ? reader_.encodedValue(text_) : reader_.value(text_, Spelling::Plain);
        case In::Proxy:
            if ((proxyParts_ & 2) == 0)
                reader_.fail("the placeholder names no target", "the attribute 'element'");
            return reader_.proxy(*proxyPlan_, std::exchange(proxy_, {}));
        case In::ProxyPart:
            return setProxyPart(part_, encoded_ ? reader_.decoded(text_) : reader_.wide(text_));
        default:
            return;
        }
    }

    ModelReader& reader_;
    XML_Parser parser_;
    Lines lines_;
    std::exception_ptr failure_;
    std::vector<In> in_;
    std::vector<Attribute> attributes_; ///< of the tag at hand
    std::string text_;
    bool encoded_ = false;
    ReadPlan const* proxyPlan_ = nullptr;
    ProxyId proxy_;
    unsigned proxyParts_ = 0;
    unsigned part_ = 0;
};

[[noreturn]] void failSyntax(ModelReader& reader, XML_Parser parser) {
    std::string message = XML_ErrorString(XML_GetErrorCode(parser));
    switch (XML_GetErrorCode(parser)) {
    case XML_ERROR_NO_ELEMENTS:
        reader.fail(XML_GetCurrentByteIndex(parser) <= 0 ? "the text is empty" : "the text holds no element",
                    "<model>");
    case XML_ERROR_JUNK_AFTER_DOC_ELEMENT:
        reader.fail("something follows the root element", "the end of the text");
    case XML_ERROR_NO_MEMORY:
        throw std::bad_alloc();
    default:
        reader.fail("the text is no well-formed XML: " + message);
    }
}

} // namespace

void XmlParser::read(ModelReader& reader, TextSource& source) {
    constexpr int portion = 64 * 1024;
    struct Free {
        void operator()(XML_ParserStruct* parser) const noexcept { XML_ParserFree(parser); }
    };
    // An encoding given here goes over what the text declares.
    std::unique_ptr<XML_ParserStruct, Free> const parser(
        XML_ParserCreate(source.forcesUtf8() ? "UTF-8" : nullptr));
    if (parser == nullptr) throw std::bad_alloc();
    Handler handler(reader, parser.get());
    for (bool last = false; !last;) {
        void* const buffer = XML_GetBuffer(parser.get(), portion);
        if (buffer == nullptr) failSyntax(reader, parser.get());
        std::size_t const size = source.read(static_cast<char*>(buffer), portion);
        last = size == 0;
        handler.lines().take({static_cast<char const*>(buffer), size});
        XML_Status const status = XML_ParseBuffer(parser.get(), static_cast<int>(size), last ? 1 : 0);
        if (handler.failure() != nullptr) std::rethrow_exception(handler.failure());
        if (status != XML_STATUS_OK) failSyntax(reader, parser.get());
    }
}

} // namespace brant::zero::io
