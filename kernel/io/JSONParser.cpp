// Reading JSON: the library's reader tells tokens, the states here give them their place in a model.

#include "JsonStream.hpp"
#include "ModelReader.hpp"
#include "NearName.hpp"

// A namespace of its own keeps this use of the library, with sizes of 64 bits, apart from any other in the
// process.
#define RAPIDJSON_NAMESPACE zelkor_rapidjson
#define RAPIDJSON_NAMESPACE_BEGIN namespace zelkor_rapidjson {
#define RAPIDJSON_NAMESPACE_END }
#define RAPIDJSON_NO_SIZETYPEDEFINE
namespace zelkor_rapidjson {
using SizeType = std::size_t;
}
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

namespace brant::zero::io {
namespace {
using Reader = zelkor_rapidjson::Reader;
}
} // namespace brant::zero::io

namespace zelkor_rapidjson {

// The library copies plain runs of characters in strides where the whole text is in memory; here it is in a
// buffer.
template <>
template <>
inline void Reader::ScanCopyUnescapedString(brant::zero::io::JsonStream& stream,
                                            Reader::StackStream<char>& out) {
    stream.copyPlain([&](char const* text, std::size_t size) { std::memcpy(out.Push(size), text, size); });
}

} // namespace zelkor_rapidjson

namespace brant::zero::io {

namespace {

/// What the innermost open object or array is.
enum class In : std::uint8_t {
    Document,
    Elements, ///< the list of elements without container
    Unknown,  ///< an object whose first member says what it is
    Element,
    List,
    Proxy,
    Encoded
};

/// Where the innermost element or the document is, member by member.
enum class Stage : std::uint8_t { Class, Uuid, UuidValue, Properties };
enum class Head : std::uint8_t { Format, FormatValue, Version, VersionValue, Elements, ElementsValue, Done };

class Handler {
  public:
    explicit Handler(ModelReader& reader) : reader_(reader) {}

    bool StartObject() {
        reader_.enterLevel();
        if (startSkipped()) return true;
        if (in_.empty()) {
            in_.push_back(In::Document);
            return true;
        }
        if (at(In::Element))
            requireValuePlace();
        else if (!at(In::Elements) && !at(In::List))
            reader_.fail("an object stands where none can be", wanted());
        in_.push_back(In::Unknown);
        return true;
    }

    bool Key(char const* text, std::size_t size, bool) {
        std::string_view const name(text, size);
        if (skipping_ > 0) return true;
        switch (in_.back()) {
        case In::Document:
            documentKey(name);
            break;
        case In::Unknown:
            firstKey(name);
            break;
        case In::Element:
            elementKey(name);
            break;
        case In::Proxy:
            proxyKey(name);
            break;
        default:
            reader_.fail("an object with 'base64' has no other member");
        }
        return true;
    }

    bool EndObject(std::size_t) {
        reader_.leaveLevel();
        if (endSkipped()) return true;
        switch (in_.back()) {
        case In::Document:
            if (head_ != Head::Done) reader_.fail("the document ends early", wanted());
            break;
        case In::Element:
            if (stage_ != Stage::Properties) reader_.fail("the element has no identity", "the member 'uuid'");
            reader_.endElement();
            break;
        case In::Proxy:
            if ((proxyParts_ & 4) == 0)
                reader_.fail("the placeholder names no target", "the member 'element'");
            reader_.proxy(*plan_, std::exchange(proxy_, {}));
            break;
        case In::Unknown:
            reader_.fail("the object is empty", "the member 'class'");
        default:
            break;
        }
        in_.pop_back();
        return true;
    }

    bool StartArray() {
        reader_.enterLevel();
        if (startSkipped()) return true;
        if (in_.empty()) reader_.fail("the text is no model", "an object");
        if (at(In::Document) && head_ == Head::ElementsValue) {
            head_ = Head::Done;
            in_.push_back(In::Elements);
        } else if (at(In::Element) && stage_ == Stage::Properties && isMany(reader_.field().step)) {
            in_.push_back(In::List);
        } else {
            reader_.fail("an array stands where none can be", wanted());
        }
        return true;
    }

    bool EndArray(std::size_t) {
        reader_.leaveLevel();
        if (!endSkipped()) in_.pop_back();
        return true;
    }

    bool String(char const* text, std::size_t size, bool) { return value({text, size}, Spelling::Quoted); }
    bool RawNumber(char const* text, std::size_t size, bool) { return value({text, size}, Spelling::Number); }
    bool Bool(bool value) { return this->value(value ? "true" : "false", Spelling::Word); }
    bool Null() { return value("null", Spelling::Word); }
    // Numbers come as they are spelled.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }

  private:
    [[nodiscard]] bool at(In in) const noexcept { return in_.back() == in; }

    bool startSkipped() {
        if (skipNext_)
            skipping_ = 1;
        else if (skipping_ > 0)
            ++skipping_;
        else
            return false;
        skipNext_ = false;
        return true;
    }
    bool endSkipped() noexcept { return skipping_ > 0 && skipping_-- > 0; }

    [[nodiscard]] std::string wanted() const {
        if (in_.empty()) return "an object";
        switch (in_.back()) {
        case In::Document:
            switch (head_) {
            case Head::Format:
                return "the member 'format'";
            case Head::Version:
                return "the member 'version'";
            case Head::Elements:
                return "the member 'elements'";
            case Head::ElementsValue:
                return "an array";
            default:
                return "a string";
            }
        case In::Elements:
            return "an element";
        case In::Element:
            if (stage_ != Stage::Properties) return "a string";
            return isMany(reader_.field().step) ? "an array" : "one value";
        case In::List:
            return "a value of the list";
        default:
            return "a string";
        }
    }

    /// \requires a member's value to begin.
    void requireValuePlace() {
        if (stage_ != Stage::Properties || isMany(reader_.field().step))
            reader_.fail("a single value stands where none can be", wanted());
    }

    void documentKey(std::string_view name) {
        constexpr std::string_view names[] = {"format", "version", "elements"};
        auto const index = static_cast<std::size_t>(head_) / 2;
        if (index < 3 && name == names[index]) {
            head_ = static_cast<Head>(static_cast<std::size_t>(head_) + 1);
            return;
        }
        for (std::string_view const known : names)
            if (name == known)
                reader_.fail("the member " + quote(name) + " stands in a wrong place or twice",
                             index < 3 ? wanted() : "the end of the object");
        if (head_ < Head::Elements || !reader_.skipsUnknown())
            reader_.fail("a document has no member " + quote(name) +
                             suggestion(name, {std::begin(names), std::end(names)}),
                         index < 3 ? wanted() : "the end of the object");
        reader_.warn("The member " + quote(name) + " is not known. It is skipped.");
        skipNext_ = true;
    }

    void firstKey(std::string_view name) {
        bool const inElement = in_[in_.size() - 2] != In::Elements;
        if (name == "class") {
            in_.back() = In::Element;
            stage_ = Stage::Class;
        } else if (name == "proxy" && inElement) {
            in_.back() = In::Proxy;
            proxy_ = {};
            proxyParts_ = 1;
            part_ = 0;
        } else if (name == "base64" && inElement) {
            in_.back() = In::Encoded;
        } else {
            reader_.fail("the object begins with " + quote(name), "the member 'class'");
        }
    }

    void elementKey(std::string_view name) {
        if (stage_ == Stage::Uuid) {
            if (name != "uuid")
                reader_.fail("the member " + quote(name) + " stands before the identity",
                             "the member 'uuid'");
            stage_ = Stage::UuidValue;
            return;
        }
        if (name == "class" || name == "uuid")
            reader_.fail("the member " + quote(name) + " stands twice in one element", "each member once");
        skipNext_ = reader_.beginProperty(name) == nullptr;
    }

    void proxyKey(std::string_view name) {
        constexpr std::string_view names[] = {"proxy", "model", "element", "external"};
        for (unsigned i = 0; i < std::size(names); ++i)
            if (name == names[i]) {
                if ((proxyParts_ & 1u << i) != 0)
                    reader_.fail("the member " + quote(name) + " stands twice in a placeholder");
                proxyParts_ |= 1u << i;
                part_ = i;
                return;
            }
        reader_.fail("a placeholder has no member " + quote(name), "'model', 'element' or 'external'");
    }

    bool value(std::string_view text, Spelling spelling) {
        if (skipping_ > 0 || std::exchange(skipNext_, false)) return true;
        if (in_.empty()) reader_.fail("the text is no model", "an object");
        switch (in_.back()) {
        case In::Document:
            documentValue(text, spelling);
            break;
        case In::Element:
            elementValue(text, spelling);
            break;
        case In::List:
            reader_.value(text, spelling);
            break;
        case In::Proxy:
            requireText(spelling);
            proxyValue(text);
            break;
        case In::Encoded:
            requireText(spelling);
            reader_.encodedValue(text);
            break;
        default:
            reader_.fail("a value stands where an element belongs", "an element");
        }
        return true;
    }

    void requireText(Spelling spelling) {
        if (spelling != Spelling::Quoted) reader_.fail("the value is of a wrong kind", "a string");
    }

    void documentValue(std::string_view text, Spelling spelling) {
        if (head_ == Head::ElementsValue) reader_.fail("the elements are no list", "an array");
        requireText(spelling);
        if (head_ == Head::FormatValue)
            reader_.checkFormat(text);
        else
            reader_.checkVersion(text);
        head_ = static_cast<Head>(static_cast<int>(head_) + 1);
    }

    void elementValue(std::string_view text, Spelling spelling) {
        switch (stage_) {
        case Stage::Class:
            requireText(spelling);
            plan_ = &reader_.classNamed(text);
            stage_ = Stage::Uuid;
            break;
        case Stage::UuidValue:
            requireText(spelling);
            reader_.beginElement(*plan_, text);
            stage_ = Stage::Properties;
            break;
        default:
            requireValuePlace();
            reader_.value(text, spelling);
        }
    }

    void proxyValue(std::string_view text) {
        switch (part_) {
        case 1:
            proxy_.model = reader_.wide(text);
            break;
        case 2:
            proxy_.element = reader_.wide(text);
            break;
        case 3:
            proxy_.external = std::make_shared<std::u16string>(reader_.wide(text));
            break;
        default:
            plan_ = &reader_.classNamed(text);
        }
    }

    ModelReader& reader_;
    std::vector<In> in_;
    Head head_ = Head::Format;
    Stage stage_ =
        Stage::Properties; ///< of the innermost element: an outer one is always among its properties
    ReadPlan const* plan_ = nullptr;
    ProxyId proxy_;
    unsigned proxyParts_ = 0;
    unsigned part_ = 0;
    bool skipNext_ = false;
    std::size_t skipping_ = 0; ///< open objects and arrays of a skipped value
};

std::string lowered(std::string text) {
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    if (text.ends_with('.')) text.pop_back();
    return text;
}

} // namespace

void JSONParser::read(ModelReader& reader, TextSource& source) {
    namespace json = zelkor_rapidjson;
    JsonStream stream(reader, source);
    if (stream.empty()) reader.fail("the text is empty", "a model");
    Handler handler(reader);
    json::Reader parser;
    json::ParseResult const result =
        parser.Parse<json::kParseIterativeFlag | json::kParseNumbersAsStringsFlag>(stream, handler);
    if (result.IsError()) {
        if (result.Code() == json::kParseErrorStringEscapeInvalid &&
            static_cast<unsigned char>(stream.Peek()) < 0x20)
            reader.failAt(stream.here(), "a control character stands in a string", "its escape");
        reader.failAt(stream.here(), lowered(json::GetParseError_En(result.Code())));
    }
    if (!stream.atEnd())
        reader.failAt(stream.here(), "a zero character stands in the text", "the end of the text");
}

} // namespace brant::zero::io
