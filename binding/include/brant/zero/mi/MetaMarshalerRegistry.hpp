/// \file
/// The marshalers of all types.
#pragma once

#include "brant/zero/mi/ValueMarshaler.hpp"

#include <unordered_map>

namespace brant::zero::mi {

/// Which marshaler serves which type. It has the primitives from the start and makes those of element classes
/// when they are first asked for; enumerations and value types are registered with their schema. Belongs to
/// the host's thread; never destroyed.
class ZELKOR_API MetaMarshalerRegistry {
  public:
    static MetaMarshalerRegistry& getInstance();

    /// \returns the marshaler; the script class of its values is loaded. O(1). \throws NoSuchType when the type has none.
    [[nodiscard]] ValueMarshaler const& getPropertyMarshaler(meta::Type const& type);
    /// Takes the place of what was registered for the type.
    void registerTypeMarshaler(meta::Type const& type, std::unique_ptr<ValueMarshaler> marshaler);
    void unregisterTypeMarshaler(meta::Type const& type);

  private:
    MetaMarshalerRegistry();

    struct Entry {
        std::unique_ptr<ValueMarshaler> marshaler;
        bool isReady = false; ///< whether its dependencies are loaded, or being loaded
    };
    std::unordered_map<ElementImpl const*, Entry> marshalers_;
};

} // namespace brant::zero::mi
