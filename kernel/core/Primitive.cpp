#include "Primitive.ipp"

namespace brant::zero {

template class PrimitiveSequence<int>;
template class PrimitiveSequence<std::string>;
template class PrimitiveSequence<std::u16string>;

} // namespace brant::zero
