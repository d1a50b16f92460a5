#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>

#include "fuzz/Targets.h"
#include "support/ScratchFolder.h"

/// Gives each target its seeds and some changes of them: always the same ones, so that a test that fails fails again.
///
///     fuzz_smoke SEEDS [TARGET]
///
/// SEEDS is the folder with a folder of seeds for each target. The input at work when the process ends lies in the file
/// "fuzz-finding" of the current folder.
namespace {

using corvane::fuzz::Target;
namespace fs = std::filesystem;

/// What a sanitizer or a failed requirement leaves behind.
class Witness {
public:
    static void keep(const Target& target, const std::string& input) {
        at_ = &target;
        input_ = &input;
    }
    static void tell() {
        if (!at_) return;
        std::fprintf(stderr, "fuzz_smoke: target %s, %zu bytes, in the file fuzz-finding\n", at_->name, input_->size());
        if (std::FILE* file = std::fopen("fuzz-finding", "wb")) {
            std::fwrite(input_->data(), 1, input_->size(), file);
            std::fclose(file);
        }
    }

private:
    static inline const Target* at_ = nullptr;
    static inline const std::string* input_ = nullptr;
};

/// One to four small changes, as a fuzzer makes them.
std::string changed(std::string text, const std::vector<std::string>& seeds, std::mt19937& random) {
    const auto below = [&random](std::size_t limit) { return random() % std::max<std::size_t>(limit, 1); };
    for (auto left = 1 + below(4); left > 0; --left) {
        const auto at = below(text.size());
        const auto some = std::min(1 + below(16), text.size() - at);
        switch (below(6)) {
            case 0:
                if (!text.empty()) text[at] = static_cast<char>(random());
                break;
            case 1:
                if (!text.empty()) text[at] = static_cast<char>(text[at] ^ 1 << below(8));
                break;
            case 2:
                text.erase(at, some);
                break;
            case 3:
                text.insert(at, text.substr(below(text.size()), some));
                break;
            case 4:
                text.insert(at, 1, static_cast<char>(random()));
                break;
            default: {
                const auto& other = seeds[below(seeds.size())];
                text = text.substr(0, at) + other.substr(std::min(at, other.size()));
            }
        }
    }
    return text;
}

std::vector<std::string> seedsIn(const fs::path& folder) {
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(folder)) paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    std::vector<std::string> seeds{""};
    for (const auto& path : paths) seeds.push_back(corvane::fakes::ScratchFolder::content(path));
    return seeds;
}

void run(const Target& target, const fs::path& folder) {
    const auto start = std::chrono::steady_clock::now();
    std::mt19937 random(1);
    const auto seeds = seedsIn(folder);
    std::size_t runs = 0;
    const auto give = [&](const std::string& input) {
        Witness::keep(target, input);
        target.run(input);
        ++runs;
    };
    for (const auto& seed : seeds) {
        give(seed);
        for (int i = 0; i < target.changes; ++i) give(changed(seed, seeds, random));
    }
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    std::printf("%-14s %5zu inputs %6lld ms\n", target.name, runs, static_cast<long long>(ms.count()));
}

}  // namespace

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
extern "C" void __sanitizer_set_death_callback(void (*callback)());
#define WATCH_SANITIZER() __sanitizer_set_death_callback(&Witness::tell)
#endif
#endif
#ifndef WATCH_SANITIZER
#define WATCH_SANITIZER() static_cast<void>(0)
#endif

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    GTEST_FLAG_SET(throw_on_failure, true);  // a fake that finds itself misused
    WATCH_SANITIZER();
    std::signal(SIGABRT, [](int) { Witness::tell(); });
    for (const auto& target : corvane::fuzz::targets()) {
        if (argc < 3 || std::strcmp(argv[2], target.name) == 0) run(target, fs::path(argv[1]) / target.name);
    }
}
