#include "brant/zero/mi/EmptyParentPackage.hpp"

#include "brant/zero/mi/MetaMarshalerRegistry.hpp"

namespace brant::zero::mi {

void EmptyParentPackage::initializePackage(quorl::QuorlPackage*) {}

void EmptyParentPackage::registerPackage() {
    quorl::QuorlPackage::addPackage(std::unique_ptr<quorl::QuorlPackageInfo>(this));
}

void EmptyParentPackage::Registrar::registerTypeMarshaler(meta::Type const& type,
                                                          std::unique_ptr<ValueMarshaler> marshaler) {
    MetaMarshalerRegistry::getInstance().registerTypeMarshaler(type, std::move(marshaler));
}

void EmptyParentPackage::Registrar::unregisterTypeMarshaler(meta::Type const& type) {
    MetaMarshalerRegistry::getInstance().unregisterTypeMarshaler(type);
}

} // namespace brant::zero::mi
