#pragma once

#include <functional>

#include "quorl/krelArray.hpp"

namespace quorl {

class QuorlTypeRepository;
namespace factory::detail {
/// Makes the text types known to signatures. Every class calls it before it makes its first one. O(1).
ZELKOR_API void initStringDataTypes();
} // namespace factory::detail

/// A type as signatures spell it: a built-in name or a dotted class name, with " scalar" for one element.
class ZELKOR_API QuorlType {
  public:
    enum class Kind : std::uint8_t { Any, Void, Numeric, Char, String, Struct, Class };

    /// Throws BadSignature for a name that is neither built in nor dotted. Class names are not looked up.
    static QuorlType parse(std::string_view spelling);

    Kind getKind() const noexcept { return _kind; }
    bool isScalar() const noexcept { return _scalar; }
    std::string const& getSpelling() const noexcept { return _spelling.text(); }
    InternedName getClassName() const noexcept { return _className; } ///< empty for a built-in type
    bool accepts(krelArray const& array) const;
    friend bool operator==(QuorlType const&, QuorlType const&) = default;

  private:
    friend class QuorlTypeRepository;
    friend void factory::detail::initStringDataTypes();

    Kind _kind = Kind::Any;
    NumericType _numeric = NumericType::Double;
    bool _scalar = false;
    InternedName _className;
    InternedName _spelling;
};

/// Turns a value into one of another type.
class ZELKOR_API QuorlConversion {
  public:
    virtual ~QuorlConversion();
    /// Throws when the value has no counterpart.
    virtual ArrayPtr convert(krelArray const& value) const = 0;
};

/// A value in a wanted type: either the one that was given, or a converted one that lives as long as this.
class ConvertedValue {
  public:
    explicit ConvertedValue(krelArray const& given) : _value(&given) {}
    explicit ConvertedValue(ArrayPtr made) : _made(std::move(made)), _value(_made.get()) {}
    krelArray const& operator*() const noexcept { return *_value; }

  private:
    ArrayPtr _made;
    krelArray const* _value;
};

/// The conversions between types, by their spellings.
class ZELKOR_API QuorlTypeRepository {
  public:
    static QuorlTypeRepository& getInstance();

    /// A converter may serve several pairs. Throws DuplicateName when the pair has one: remove it first.
    void addConversion(std::string_view from, std::string_view to, std::shared_ptr<QuorlConversion const>);
    /// \returns false when there was none.
    bool removeConversion(std::string_view from, std::string_view to);
    /// \returns null when there is none; valid until it is removed.
    QuorlConversion const* getConversion(std::string_view from, std::string_view to) const;

    /// Numbers change their type when no digit is lost; all else needs a conversion from the value's own type
    /// or from "any". Characters and strings are distinct. `where` names the input in the WrongType error.
    ConvertedValue convert(krelArray const& value, QuorlType const& type, std::string_view where) const;

    QuorlTypeRepository(QuorlTypeRepository const&) = delete;
    QuorlTypeRepository& operator=(QuorlTypeRepository const&) = delete;
    ~QuorlTypeRepository();

  private:
    friend class QuorlType;
    friend void factory::detail::initStringDataTypes();
    struct Data;

    QuorlTypeRepository();

    std::unique_ptr<Data> _data;
};

} // namespace quorl
