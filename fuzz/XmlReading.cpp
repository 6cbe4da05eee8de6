#include "Reading.hpp"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    return zelkor::fuzz::read(data, size, zelkor::ast::io::IoFormat::xml);
}
