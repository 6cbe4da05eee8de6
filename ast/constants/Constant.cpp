#include "zelkor/ast/constants/Constant.hpp"

#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/constants/AddressConstant.hpp"
#include "zelkor/ast/constants/AggregateConstant.hpp"
#include "zelkor/ast/constants/DesignatorConstant.hpp"
#include "zelkor/ast/constants/DynamicInitConstant.hpp"
#include "zelkor/ast/constants/ErrorConstant.hpp"
#include "zelkor/ast/constants/FloatConstant.hpp"
#include "zelkor/ast/constants/InitRepeatConstant.hpp"
#include "zelkor/ast/constants/IntegerConstant.hpp"
#include "zelkor/ast/constants/PointerToMemberConstant.hpp"
#include "zelkor/ast/constants/StringConstant.hpp"
#include "zelkor/ast/constants/TemplateParamConstant.hpp"
#include "zelkor/ast/constants/VoidConstant.hpp"

namespace zelkor::ast::constants {

// clang-format off
#define ZELKOR_IS(Kind) bool Constant::Impl::is##Kind() const { return brant::zero::isA<Kind##Constant>(*this); }
ZELKOR_IS(Aggregate)
ZELKOR_IS(Numeric)
ZELKOR_IS(Float)
ZELKOR_IS(Integer)
ZELKOR_IS(Error)
ZELKOR_IS(Void)
ZELKOR_IS(Address)
ZELKOR_IS(String)
ZELKOR_IS(TemplateParam)
ZELKOR_IS(PointerToMember)
ZELKOR_IS(DynamicInit)
ZELKOR_IS(InitRepeat)
ZELKOR_IS(Designator)
#undef ZELKOR_IS
// clang-format on

Constant Constant::Impl::fromDouble(brant::zero::Model const& m, double d) {
    return FloatConstant::fromDouble(m, d);
}

Constant Constant::Impl::fromSignedInteger(brant::zero::Model const& m, long i) {
    return IntegerConstant::fromSignedInteger(m, i);
}

Constant Constant::Impl::fromUnsignedInteger(brant::zero::Model const& m, unsigned long u) {
    return IntegerConstant::fromUnsignedInteger(m, u);
}

} // namespace zelkor::ast::constants
