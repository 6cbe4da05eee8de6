#include "brant/zero/io/Serializer.hpp"

namespace brant::zero::io {

Serializer::~Serializer() = default;

} // namespace brant::zero::io
