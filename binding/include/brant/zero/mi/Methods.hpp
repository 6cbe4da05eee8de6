/// \file
/// The methods of element classes, one class for each sort of method, told by tables which one they are.
#pragma once

#include "brant/zero/mi/ElementMarshaler.hpp"
#include "quorl/Factory.hpp"

namespace brant::zero::mi {

/// Calls a static operation with inputs of the types of its signature.
using StaticCall = quorl::ArrayPtr (*)(quorl::Inputs inputs);

/// A method by its name; the operation is looked up in the table of the class.
struct ScriptMethod {
    char const* name;
    StaticCall call; ///< null for an operation of an element
};

/// A method whose body is a plain function.
class ZELKOR_API PlainMethod final : public quorl::factory::QuorlMethod {
  public:
    using Body = void (*)(quorl::Outputs& outputs, quorl::Inputs inputs);
    PlainMethod(std::string name, unsigned attributes, std::unique_ptr<quorl::QuorlMethodSignature> signature,
                Body body)
        : QuorlMethod(std::move(name), attributes, ""), body_(body) {
        setSignature(std::move(signature));
    }
    void invoke(quorl::Outputs& outputs, quorl::Inputs inputs) override { body_(outputs, inputs); }

  private:
    Body body_;
};

/// The constructor of an element class: a model, then an init and an identity in any order, both optional.
///
/// The init is a struct of one element (see `detail::createBuilderFromStruct`), the identity its canonical
/// text. \throws CannotCreateWithoutModel without a usable model, InvalidValue for a second init, a second
/// identity, or what is neither.
class ZELKOR_API Construct final : public quorl::factory::QuorlMethod {
  public:
    explicit Construct(schema::ClassTable const& table);
    void invoke(quorl::Outputs& outputs, quorl::Inputs inputs) override;

  private:
    schema::ClassTable const* table_;
};

/// `createIntoP`: makes an element that the object owns through property P; an init, an identity, or the two
/// in this order may follow. \throws InvalidHandle, InvalidValue, CannotInstantiate when the class of P is
/// abstract and the init names no other, and what the model reports.
class ZELKOR_API CreateInto final : public quorl::factory::QuorlMethod {
  public:
    CreateInto(schema::ClassTable const& table, schema::PropertyRow const& row);
    void invoke(quorl::Outputs& outputs, quorl::Inputs inputs) override;

  private:
    schema::PropertyRow const* row_;
};

/// `StaticMetaClass`: the metamodel's description of the class.
class ZELKOR_API StaticMetaClass final : public quorl::factory::QuorlMethod {
  public:
    explicit StaticMetaClass(schema::ClassTable const& table);
    void invoke(quorl::Outputs& outputs, quorl::Inputs inputs) override;

  private:
    schema::ClassTable const* table_;
};

/// An operation of an element.
class ZELKOR_API QueryMethod final : public quorl::factory::QuorlMethod {
  public:
    QueryMethod(schema::ClassTable const& table, schema::OperationRow const& row);
    void invoke(quorl::Outputs& outputs, quorl::Inputs inputs) override;

  private:
    schema::OperationRow const* row_;
};

/// A static operation.
class ZELKOR_API StaticQueryMethod final : public quorl::factory::QuorlMethod {
  public:
    StaticQueryMethod(schema::OperationRow const& row, StaticCall call);
    void invoke(quorl::Outputs& outputs, quorl::Inputs inputs) override;

  private:
    StaticCall call_;
};

} // namespace brant::zero::mi
