#include "zelkor/ast/types/Type.hpp"

#include "Names.hpp"

namespace zelkor::ast::types {

std::string Type::Impl::generateTypeName(Type const& type, std::string const& symName, bool skipTypedefs) {
    return names::typeName(type.get(), symName, skipTypedefs);
}

} // namespace zelkor::ast::types
