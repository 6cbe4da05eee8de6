#include "zelkor/ast/types/EnumType.hpp"

#include "TypeWalk.hpp"
#include "brant/zero/Bodies.hpp"
#include "zelkor/ast/types/IntegerType.hpp"

namespace zelkor::ast::types {

bool EnumType::Impl::getIsSigned() const {
    auto const* storage = brant::zero::aliveAs<Type>(takeOff(&isBased, getStorageTypeBody()));
    if (storage == nullptr || !brant::zero::isA<IntegerType>(*storage)) return true;
    return static_cast<IntegerType::Impl const*>(storage)->getIsSigned();
}

} // namespace zelkor::ast::types
