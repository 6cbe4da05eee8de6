#include "zelkor/ast/binding.hpp"

#include "AstQuorl.hpp"
#include "brant/zero/mi/KernelBinding.hpp"
#include "zelkor/ast/mi/Wrappers.hpp"

#include <mutex>

namespace {

void registerAll() {
    brant::zero::mi::registerKernelPackages();
    // Every class of the model stands on the kernel's; asking for one of them loads their packages.
    quorl::QuorlClass::getClass("brant.zero.meta.Argument");
    zelkor::ast::mi::registerPackages();
    quorl::factory::registerQuorlPackage("internal.zelkor.ast", [](quorl::QuorlPackage* package) {
        package->addClass(std::make_unique<zelkor::mi::ast::AstQuorl>());
    });
    quorl::factory::registerQuorlPackage("internal.zelkor.ast.io", [](quorl::QuorlPackage* package) {
        brant::zero::mi::addEnumeration(*package, std::make_unique<zelkor::mi::ast::io::IoFormatQuorl>());
    });
    zelkor::ast::mi::registerMarshalers();
}

} // namespace

void zelkor_ast_initialize() {
    static std::once_flag once;
    if (omGetQuorlUsingUSM())
        registerAll();
    else
        std::call_once(once, registerAll);
}

void zelkor_ast_terminate() {}
