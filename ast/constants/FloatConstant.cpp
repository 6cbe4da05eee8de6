#include "zelkor/ast/constants/FloatConstant.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace zelkor::ast::constants {

/// `strtod` reports underflow and overflow alike through `errno`, which belongs to the caller.
bool FloatConstant::Impl::toDouble(double* value) const {
    char const* const text = getValue().c_str();
    char* end = nullptr;
    int const callersErrno = std::exchange(errno, 0);
    double const number = std::strtod(text, &end);
    int const outcome = std::exchange(errno, callersErrno);
    if (end == text || outcome == ERANGE) return false;
    if (value != nullptr) *value = number;
    return true;
}

bool FloatConstant::Impl::fitsDouble() const {
    return toDouble(nullptr);
}

double FloatConstant::Impl::getDouble() const {
    double value = 0;
    return toDouble(&value) ? value : std::numeric_limits<double>::quiet_NaN();
}

FloatConstant FloatConstant::Impl::fromByteString(brant::zero::Model const& m, std::string const& str) {
    FloatConstant constant = FloatConstant::create(m);
    constant.setValue(str);
    return constant;
}

FloatConstant FloatConstant::Impl::fromDouble(brant::zero::Model const& m, double d) {
    char text[328]; // sign, 309 digits, the point, six decimals; a multi-byte point of some locale fits too
    int const length = std::snprintf(text, sizeof text, "%f", d);
    return fromByteString(m, std::string(text, static_cast<std::size_t>(length)));
}

} // namespace zelkor::ast::constants
