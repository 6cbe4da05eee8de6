#include "zelkor/ast/constants/NumericConstant.hpp"

namespace zelkor::ast::constants {

std::string NumericConstant::Impl::toByteString() const {
    return getValue();
}

} // namespace zelkor::ast::constants
