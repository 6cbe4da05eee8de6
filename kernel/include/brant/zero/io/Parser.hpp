/// \file
/// Reading a model from text.
#pragma once

#include "brant/zero/Model.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace brant::zero::io {

class TextSource;

/// Reads texts into a model, each in one transaction: when one cannot be read, the model is as it was before.
/// Takes time linear in the text; beside the model it needs a buffer, the longest single value and tables of
/// the identities and references, and it does not recurse.
class ZELKOR_API Parser {
  public:
    /// Whether the path of the text is kept as the URI of what was read. It has no effect on elements.
    enum class UpdateModelURI : std::uint32_t { No = 0, Yes = 1 };

    virtual ~Parser();

    /// The model to fill; write to it before parsing. A null one is replaced by a new model then.
    [[nodiscard]] Model& targetModel() noexcept { return model_; }

    /// \throws FileError when the file cannot be read, ParseError when its text cannot.
    void parseFile(std::u16string const& path, UpdateModelURI update = UpdateModelURI::No);
    /// Reads UTF-8, with or without byte order mark. \throws ParseError.
    void parseString(std::string const& text);
    /// Reads UTF-16, with or without byte order mark. \throws ParseError.
    void parseString(std::u16string const& text);

    /// What was noticed while reading the last text and did no harm: "file:line:column: warning: ...".
    [[nodiscard]] std::vector<std::string> const& warnings() const noexcept { return warnings_; }
    /// The path of the last file read with `UpdateModelURI::Yes`; empty before.
    [[nodiscard]] std::u16string const& modelUri() const noexcept { return modelUri_; }

    /// How many levels of the text may be nested; deeper ones are an error. 10,000,000 unless set.
    void setDepthLimit(std::size_t levels) noexcept { depthLimit_ = levels; }
    [[nodiscard]] std::size_t depthLimit() const noexcept { return depthLimit_; }

  private:
    friend class ModelReader;

    void parse(std::string const& name, TextSource& source);
    virtual void read(class ModelReader& reader, TextSource& source) = 0;

    Model model_;
    std::vector<std::string> warnings_;
    std::u16string modelUri_;
    std::size_t depthLimit_ = 10'000'000;
};

class ZELKOR_API JSONParser final : public Parser {
  private:
    void read(ModelReader& reader, TextSource& source) override;
};

class ZELKOR_API XmlParser final : public Parser {
  private:
    void read(ModelReader& reader, TextSource& source) override;
};

} // namespace brant::zero::io
