/// \file
/// The kernel's own package: the classes of meta objects, the root classes and the primitives.
#pragma once

#include "brant/zero/meta/MetaRegistry.hpp"

namespace brant::zero::meta {

class ZELKOR_API KernelPackage final : public AbstractMetaPackage {
  public:
    /// \returns the package, assembled on the first call and never destroyed. Thread-safe.
    static KernelPackage& getInstance();

    /// True on the thread that assembles the package, while it does: the registry is in use already then.
    static bool& assembling() noexcept;

    [[nodiscard]] Class const& modelElementClass() const noexcept { return modelElement_; }
    [[nodiscard]] Class const& modelClass() const noexcept { return model_; }

  private:
    KernelPackage();
    void createRootClasses();
    void createPrimitives();

    static schema::PackageTable const* const packages;
    static schema::RootTable const root;

    Class modelElement_;
    Class model_;
};

} // namespace brant::zero::meta
