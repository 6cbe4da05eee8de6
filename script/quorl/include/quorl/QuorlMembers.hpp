#pragma once

#include "quorl/Errors.hpp"
#include "quorl/QuorlType.hpp"

namespace quorl {

using Inputs = std::span<krelArray const* const>; ///< borrowed for the call; never null
using Outputs = std::vector<ArrayPtr>;

/// What a method takes and gives.
class ZELKOR_API QuorlMethodSignature {
  public:
    static std::unique_ptr<QuorlMethodSignature> createMethodSignature();

    /// "void" adds nothing. Throws BadSignature for what is no type.
    void addInput(std::string_view type);
    void addOutput(std::string_view type, std::string_view name = {});
    /// One word for each input, such as "model opt_init opt_uuid". Throws BadSignature when they do not
    /// match.
    void setInputNames(std::string_view words);
    /// How many of the last inputs may be left out. Throws BadSignature when there are fewer inputs.
    void setOptionalCount(std::size_t count);

    std::vector<QuorlType> const& getInputs() const noexcept { return _inputs; }
    std::vector<QuorlType> const& getOutputs() const noexcept { return _outputs; }
    std::vector<std::string> const& getInputNames() const noexcept { return _inputNames; }
    std::vector<std::string> const& getOutputNames() const noexcept { return _outputNames; }
    std::size_t getOptionalCount() const noexcept { return _optional; }
    bool acceptsCount(std::size_t count) const noexcept {
        return count <= _inputs.size() && count + _optional >= _inputs.size();
    }

  private:
    QuorlMethodSignature() = default;

    std::vector<QuorlType> _inputs;
    std::vector<QuorlType> _outputs;
    std::vector<std::string> _inputNames;
    std::vector<std::string> _outputNames;
    std::size_t _optional = 0;
};

enum MethodAttributes : unsigned { methodPlain = 0, methodStatic = 1, methodConstructor = 2 };

/// A method of a script class. Methods of one name are told apart by their inputs.
class ZELKOR_API QuorlMethodInfo {
  public:
    QuorlMethodInfo(std::string name, unsigned attributes, std::string description);
    virtual ~QuorlMethodInfo();

    std::string const& getName() const noexcept { return _name; }
    std::string const& getDescription() const noexcept { return _description; }
    bool isStatic() const noexcept { return (_attributes & methodStatic) != 0; }
    bool isConstructor() const noexcept { return (_attributes & methodConstructor) != 0; }
    /// Null until it is set; a class takes only methods that have one.
    QuorlMethodSignature* getSignature() const noexcept { return _signature.get(); }
    void setSignature(std::unique_ptr<QuorlMethodSignature> signature) { _signature = std::move(signature); }

    /// The inputs are of the types that the signature tells; the object, if any, is the first. A constructor
    /// finds the new object, unconstructed, in the first output.
    virtual void invoke(Outputs& outputs, Inputs inputs) = 0;

    QuorlMethodInfo(QuorlMethodInfo const&) = delete;
    QuorlMethodInfo& operator=(QuorlMethodInfo const&) = delete;

  private:
    std::string _name;
    std::string _description;
    std::unique_ptr<QuorlMethodSignature> _signature;
    unsigned _attributes;
};

/// A property of a script class.
class ZELKOR_API QuorlPropInfo {
  public:
    QuorlPropInfo(std::string name, unsigned attributes);
    virtual ~QuorlPropInfo();

    std::string const& getName() const noexcept { return _name; }
    unsigned getAttributes() const noexcept {
        return _attributes;
    } ///< kept for the host's user, not read here
    virtual std::string_view getTypeName() const = 0;
    virtual bool isReadOnly() const = 0;
    virtual ArrayPtr getQuorlArray(QuorlObject& self) const = 0;
    /// The value may be of any type: what fits is the setter's matter.
    virtual void setQuorlArray(QuorlObject& self, krelArray const& value) const = 0;

    /// The values of several objects in turn. O(n).
    std::vector<ArrayPtr> getQuorlArrays(std::span<QuorlObject* const> objects) const;

    QuorlPropInfo(QuorlPropInfo const&) = delete;
    QuorlPropInfo& operator=(QuorlPropInfo const&) = delete;

  private:
    std::string _name;
    unsigned _attributes;
};

/// A literal of an enumeration class over 32-bit integers.
class ZELKOR_API QuorlEnumInfo {
  public:
    QuorlEnumInfo(std::string name, InternedName className, std::int32_t value);
    virtual ~QuorlEnumInfo();

    std::string const& getName() const noexcept { return _name; }
    InternedName getClassName() const noexcept { return _className; }
    std::int32_t getNumericValue() const noexcept { return _value; }
    /// The script value of the literal: made at the first call, the same one ever after.
    krelArray const& getValue() const;

    QuorlEnumInfo(QuorlEnumInfo const&) = delete;
    QuorlEnumInfo& operator=(QuorlEnumInfo const&) = delete;

  private:
    std::string _name;
    InternedName _className;
    mutable ArrayPtr _made;
    std::int32_t _value;
};

} // namespace quorl
