#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>

#include "fuzz/Targets.h"
#include "support/ScratchFolder.h"

using namespace corvane::fuzz;

namespace {

const std::pair<const char*, Run*> kTargets[] = {
#include "targets.inc"  // of the build: one for each folder of seeds
};

}  // namespace

/// Gives each target its seeds, which the fuzzer (fuzz.sh) changes: what they are at least must hold in every test.
///
///     fuzz_smoke SEEDS     the folder with a folder of seeds for each target
int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    if (argc < 2) return 2;
    GTEST_FLAG_SET(throw_on_failure, true);  // a fake that finds itself misused
    for (const auto& [name, run] : kTargets) {
        run("");
        for (const auto& seed : fs::directory_iterator(fs::path(argv[1]) / name)) {
            std::printf("%s\n", seed.path().c_str());  // the last one is what ended the process
            std::fflush(stdout);
            run(corvane::fakes::ScratchFolder::content(seed.path()));
        }
    }
}
