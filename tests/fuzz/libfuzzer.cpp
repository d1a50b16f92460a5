#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>

#include "fuzz/Targets.h"

// The entry of the fuzzer's own main: one program for each target, which the build names here.

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    GTEST_FLAG_SET(throw_on_failure, true);  // a fake that finds itself misused
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    corvane::fuzz::CORVANE_FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
    return 0;
}
