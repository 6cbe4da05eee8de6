#include "zelkor/ast/types/Type.hpp"

#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/types/ArrayType.hpp"
#include "zelkor/ast/types/BooleanType.hpp"
#include "zelkor/ast/types/ClassType.hpp"
#include "zelkor/ast/types/EnumType.hpp"
#include "zelkor/ast/types/ErrorType.hpp"
#include "zelkor/ast/types/FloatType.hpp"
#include "zelkor/ast/types/FunctionType.hpp"
#include "zelkor/ast/types/IntegerType.hpp"
#include "zelkor/ast/types/Method.hpp"
#include "zelkor/ast/types/NullPtrType.hpp"
#include "zelkor/ast/types/OpaqueType.hpp"
#include "zelkor/ast/types/PointerToMemberType.hpp"
#include "zelkor/ast/types/PointerType.hpp"
#include "zelkor/ast/types/QualifiedType.hpp"
#include "zelkor/ast/types/ReferenceType.hpp"
#include "zelkor/ast/types/TemplateParamType.hpp"
#include "zelkor/ast/types/TyperefType.hpp"
#include "zelkor/ast/types/UnionType.hpp"
#include "zelkor/ast/types/VectorType.hpp"
#include "zelkor/ast/types/VoidType.hpp"

namespace zelkor::ast::types {

using brant::zero::isA;

// clang-format off
#define ZELKOR_IS(Class) bool Type::Impl::is##Class() const { return isA<Class>(*this); }
ZELKOR_IS(NullPtrType)
ZELKOR_IS(ErrorType)
ZELKOR_IS(OpaqueType)
ZELKOR_IS(VoidType)
ZELKOR_IS(BasedType)
ZELKOR_IS(VectorType)
ZELKOR_IS(ArrayType)
ZELKOR_IS(PointerType)
ZELKOR_IS(PointerToMemberType)
ZELKOR_IS(ReferenceType)
ZELKOR_IS(TyperefType)
ZELKOR_IS(QualifiedType)
ZELKOR_IS(BooleanType)
ZELKOR_IS(IntegerType)
ZELKOR_IS(FloatType)
ZELKOR_IS(EnumType)
ZELKOR_IS(AggregateType)
ZELKOR_IS(UnionType)
ZELKOR_IS(StructType)
ZELKOR_IS(ClassType)
ZELKOR_IS(FunctionType)
ZELKOR_IS(TemplateParamType)
#undef ZELKOR_IS
// clang-format on

bool Type::Impl::isDestructible() const {
    if (!isA<StructType>(*this)) return true;
    for (Method::Impl const& method :
         brant::zero::Bodies(static_cast<StructType::Impl const&>(*this).getMethods())) {
        if (method.getSpecialKind() != SpecialFunctionKind::Destructor) continue;
        AccessSpecifierKind const access = method.getAccess();
        if (access == AccessSpecifierKind::Protected || access == AccessSpecifierKind::Private ||
            method.getIsDeleted())
            return false;
    }
    return true;
}

} // namespace zelkor::ast::types
