// Makes elements of what a text says: the half of reading that both forms share.
#pragma once

#include "ModelImpl.hpp"
#include "NameTable.hpp"
#include "Step.hpp"
#include "brant/zero/Core.hpp"
#include "brant/zero/io/Parser.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace brant::zero::io {

/// A place in a text, counted from 1; the column in bytes.
struct Position {
    std::uint32_t line = 0;
    std::uint32_t column = 0;
};

class Locator {
  public:
    virtual ~Locator() = default;
    /// \returns where the token begins that is being read. Its cost is linear in the text since the last call
    /// at most.
    [[nodiscard]] virtual Position position() = 0;
};

struct ReadField {
    Step step;
    schema::PropertyRow const* row;
};

/// A class as a text may name it.
class ReadPlan {
  public:
    explicit ReadPlan(schema::ClassTable const& table);
    [[nodiscard]] schema::ClassTable const& table() const noexcept { return table_; }
    [[nodiscard]] ReadField const* find(std::string_view name) const noexcept { return names_.find(name); }
    /// \returns words of 64 bits that hold one bit for each property.
    [[nodiscard]] std::size_t words() const noexcept { return (table_.count + std::size_t{63}) / 64; }
    [[nodiscard]] std::vector<std::string_view> names() const;

  private:
    schema::ClassTable const& table_;
    std::vector<ReadField> fields_;
    NameTable<ReadField> names_;
};

/// How a value was spelled: XML has only text, JSON tells kinds apart.
enum class Spelling : std::uint8_t { Plain, Quoted, Number, Word };

class ModelReader {
  public:
    /// \param file its path, empty for a text in memory.
    ModelReader(Parser& parser, ModelImpl& model, std::string file);
    ModelReader(ModelReader const&) = delete;
    ModelReader& operator=(ModelReader const&) = delete;
    ~ModelReader();

    void locateBy(Locator& locator) noexcept { locator_ = &locator; }
    [[noreturn]] void fail(std::string message, std::string expected = {});
    [[noreturn]] void failAt(Position position, std::string message, std::string expected = {});
    void warn(std::string const& message);

    // The document.

    void checkFormat(std::string_view name);
    void checkVersion(std::string_view version);
    /// True when the text is of a later minor version, whose additions are skipped.
    [[nodiscard]] bool skipsUnknown() const noexcept { return later_; }
    void enterLevel();
    void leaveLevel() noexcept { --depth_; }

    // Elements.

    [[nodiscard]] ReadPlan const& classNamed(std::string_view name);
    /// Makes an element at the top or under the present property.
    void beginElement(ReadPlan const& plan, std::string_view identity);
    void endElement();

    // Properties of the innermost open element.

    /// Makes the property the present one. \returns null when it is to be skipped.
    ReadField const* beginProperty(std::string_view name);
    void endProperty();
    [[nodiscard]] ReadField const& field() const noexcept { return *frames_.back().field; }
    /// One value of the present property: a plain one, a literal or the identity of a target.
    void value(std::string_view text, Spelling spelling);
    void encodedValue(std::string_view base64);
    void reference(std::string_view identity);
    void proxy(ReadPlan const& plan, ProxyId id);
    /// The text as UTF-16; with `Quoted` spelling lone surrogates may be in it.
    [[nodiscard]] std::u16string wide(std::string_view text);

    /// The UTF-16 that base64 stands for.
    [[nodiscard]] std::u16string decoded(std::string_view base64);

    /// Resolves all references. \requires the text to be at its end.
    void finish();

  private:
    friend class ReferenceResolver;

    struct Frame {
        ModelElementImpl* element;
        ReadPlan const* plan;
        ReadField const* field;
        std::uint32_t slots; ///< references in the present owning list so far
        bool given;          ///< the present property has a value
    };
    struct OpenReference {
        ModelElementImpl* owner;
        ReadField const* field;
        uuid target;
        ModelElementImpl* proxy; ///< a placeholder that only has to wait for its turn
        std::uint32_t slot;      ///< in an owning list
        Position position;
    };

    [[nodiscard]] Position position() const {
        return locator_ == nullptr ? Position{} : locator_->position();
    }
    [[nodiscard]] uuid identity(std::string_view text);
    void requireSingle();
    void requireFit(schema::ClassTable const& table, schema::PropertyRow const& row);
    void contain(Frame const& owner, ModelElementImpl& child);
    void setNumber(std::string_view text);
    template <class Number>
    [[nodiscard]] Number number(std::string_view text);
    [[nodiscard]] double real(std::string_view text, Spelling spelling);
    [[nodiscard]] std::string bytes(std::string_view text);
    [[nodiscard]] std::uint32_t literal(std::string_view name);
    void refuseProperty(schema::ClassTable const& table, std::string_view name);
    [[noreturn]] void failKind(std::string_view text);
    [[nodiscard]] std::string described() const;
    void requireSpelling(Spelling actual, Spelling wanted, std::string_view text);

    Parser& parser_;
    ModelImpl& model_;
    std::string file_;
    Locator* locator_ = nullptr;
    std::size_t depth_ = 0;
    bool later_ = false;
    std::size_t firstElement_;
    std::vector<std::unique_ptr<ReadPlan>> plans_;
    std::unique_ptr<NameTable<ReadPlan>> classes_;
    std::vector<Frame> frames_;
    std::vector<std::uint64_t> seen_; ///< the properties that open elements had, innermost last
    std::vector<Position> begins_;    ///< of the elements, in the order of the model's list
    std::vector<OpenReference> references_;
    std::vector<ModelElement> proxies_; ///< keeps placeholders until they have found their place
};

} // namespace brant::zero::io
