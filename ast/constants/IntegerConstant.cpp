#include "zelkor/ast/constants/IntegerConstant.hpp"

#include <charconv>

namespace zelkor::ast::constants {

namespace {

/// `from_chars` is the rule itself: an optional "-" for a signed number, digits, whatever follows; no blanks,
/// no "+", no locale; out of range is an error.
template <class Number>
bool convert(std::string const& text, Number* value) {
    Number number = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), number).ec != std::errc()) return false;
    if (value != nullptr) *value = number;
    return true;
}

} // namespace

bool IntegerConstant::Impl::toSignedInteger(long* value) const {
    return convert(getValue(), value);
}

bool IntegerConstant::Impl::toUnsignedInteger(unsigned long* value) const {
    return convert(getValue(), value);
}

bool IntegerConstant::Impl::fitsSignedInteger() const {
    return toSignedInteger(nullptr);
}

bool IntegerConstant::Impl::fitsUnsignedInteger() const {
    return toUnsignedInteger(nullptr);
}

long IntegerConstant::Impl::getSignedInteger() const {
    long value = 0;
    return toSignedInteger(&value) ? value : 0;
}

unsigned long IntegerConstant::Impl::getUnsignedInteger() const {
    unsigned long value = 0;
    return toUnsignedInteger(&value) ? value : 0;
}

IntegerConstant IntegerConstant::Impl::fromByteString(brant::zero::Model const& m, std::string const& value) {
    IntegerConstant constant = IntegerConstant::create(m);
    constant.setValue(value);
    return constant;
}

IntegerConstant IntegerConstant::Impl::fromSignedInteger(brant::zero::Model const& m, long value) {
    return fromByteString(m, std::to_string(value));
}

IntegerConstant IntegerConstant::Impl::fromUnsignedInteger(brant::zero::Model const& m, unsigned long value) {
    return fromByteString(m, std::to_string(value));
}

} // namespace zelkor::ast::constants
