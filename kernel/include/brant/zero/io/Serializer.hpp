/// \file
/// Writing a model as text.
#pragma once

#include "brant/zero/Model.hpp"
#include "brant/zero/io/Span.hpp"

#include <memory>
#include <string>

namespace brant::zero::io {

class Sink;

/// Where a text goes. Movable; used for one text.
class ZELKOR_API SerializationOutput {
  public:
    /// A file by its path. A regular file is written beside the target, through symbolic links, flushed to
    /// disk and renamed, so that the old content stays until the new one is whole; pipes and devices are
    /// written directly. Nothing is opened before the text is written. \throws FileError then, with path and
    /// reason.
    static SerializationOutput forFile(std::u16string const& path, log::Span const& span);
    /// Appends UTF-8 to a string. \requires the string to outlive the output.
    static SerializationOutput forUTF8String(std::string& text);
    /// Appends UTF-16 to a string, without byte order mark. \requires the string to outlive the output.
    static SerializationOutput forUTF16String(std::u16string& text);

    SerializationOutput(SerializationOutput&&) noexcept;
    SerializationOutput& operator=(SerializationOutput&&) noexcept;
    ~SerializationOutput();

    [[nodiscard]] Sink& sink() const noexcept { return *sink_; }

  private:
    explicit SerializationOutput(std::unique_ptr<Sink> sink) noexcept;
    std::unique_ptr<Sink> sink_;
};

/// What a serializer may be told about the properties that it writes.
class ZELKOR_API SerializeCustomizer {
  public:
    /// With true, single values equal to the default of their property are left out. False by default. Empty
    /// collections and null references are left out in any case.
    void setShouldSkipDefaultValues(bool skip) noexcept { skipDefaults_ = skip; }
    [[nodiscard]] bool shouldSkipDefaultValues() const noexcept { return skipDefaults_; }

  private:
    bool skipDefaults_ = false;
};

/// Writes whole models. Takes time linear in the model and, beside a buffer, memory linear in the depth of
/// its containment; does not recurse, opens no transaction and resolves no placeholder.
class ZELKOR_API Serializer {
  public:
    virtual ~Serializer();
    /// Writes all that the model holds now, also in the middle of a transaction. \throws FileError.
    virtual void serialize(Model const& model, SerializationOutput const& output) = 0;
    [[nodiscard]] SerializeCustomizer& customizer() noexcept { return customizer_; }
    [[nodiscard]] SerializeCustomizer const& customizer() const noexcept { return customizer_; }

  private:
    SerializeCustomizer customizer_;
};

class ZELKOR_API JSONSerializer final : public Serializer {
  public:
    void serialize(Model const& model, SerializationOutput const& output) override;
};

class ZELKOR_API XmlSerializer final : public Serializer {
  public:
    void serialize(Model const& model, SerializationOutput const& output) override;
};

} // namespace brant::zero::io
