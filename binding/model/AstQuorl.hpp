/// \file
/// The script classes `Ast` and `IoFormat`.
#pragma once

#include "brant/zero/mi/EnumWrapper.hpp"
#include "quorl/Factory.hpp"
#include "zelkor/ast/Ast.hpp"

namespace zelkor::mi::ast {

/// `internal.zelkor.ast.Ast`, a value: a copy in the script is a copy of the `Ast`, which shares its model.
class AstQuorl final : public quorl::factory::CopyableDataTypeClassInfo<zelkor::ast::Ast> {
  public:
    AstQuorl();
    void initializeClass(quorl::QuorlClass* quorlClass) override;
};

namespace io {

/// `internal.zelkor.ast.io.IoFormat`.
class IoFormatQuorl final : public brant::zero::mi::EnumWrapperInfo {
  public:
    IoFormatQuorl();
};

} // namespace io

} // namespace zelkor::mi::ast
