#include "stl_target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kvx::zelvo::fuzzing::read_stl(data, size, true);
    return 0;
}
