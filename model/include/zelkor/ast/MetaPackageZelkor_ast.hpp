/// \file
/// The run-time description of the schema.
#pragma once

#include "brant/zero/meta/MetaRegistry.hpp"

namespace zelkor::ast {

/// Owns the handles of all meta objects of the schema. A heap singleton: made on the first `getInstance()`, never
/// destroyed; its objects are frozen and read by any thread without a lock.
class ZELKOR_API MetaPackageZelkor_ast final : public brant::zero::meta::AbstractMetaPackage {
  public:
    /// \returns the package. Thread-safe; what the first call throws leaves nothing behind, and the next tries again.
    static MetaPackageZelkor_ast& getInstance();

  private:
    MetaPackageZelkor_ast();
    void initialize();

    static brant::zero::schema::PackageTable const* const packages;
    static brant::zero::schema::RootTable const root;
};

} // namespace zelkor::ast
