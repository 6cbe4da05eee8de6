/// \file
/// The base of script packages.
#pragma once

#include "brant/zero/mi/ValueMarshaler.hpp"
#include "quorl/QuorlPackage.hpp"

namespace brant::zero::mi {

/// A package that has only its name until a derived class adds to it.
class ZELKOR_API EmptyParentPackage : public quorl::QuorlPackageInfo {
  public:
    explicit EmptyParentPackage(std::string name) : name_(std::move(name)) {}

    [[nodiscard]] std::string const& getName() const override { return name_; }
    /// Adds the classes; none here.
    void initializePackage(quorl::QuorlPackage* package) override;
    /// Gives the package to the host, which owns it from now on, also when this throws.
    /// \requires an object made by `new`.
    void registerPackage();

    /// Where schemas register the marshalers of their types.
    struct ZELKOR_API Registrar {
        static void registerTypeMarshaler(meta::Type const& type, std::unique_ptr<ValueMarshaler> marshaler);
        static void unregisterTypeMarshaler(meta::Type const& type);
    };

  private:
    std::string name_;
};

} // namespace brant::zero::mi
