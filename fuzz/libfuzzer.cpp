// libFuzzer's entry for one target, chosen when this file is compiled.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    qvfuzz::QV_FUZZ_TARGET(bytes, size);
    return 0;
}
