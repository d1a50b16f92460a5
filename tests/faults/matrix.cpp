#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "faults/Trial.h"

/// Runs whole updates with every fault at every step, and with random combinations of five; prints how many were tried
/// and how many held the rule. Exit status 1 when one did not.
///
///     fault_matrix [--single-step N] [--random N] [--seed N]
///
/// A step of 1 tries every single fault, 10 every tenth one.
namespace {

using corvane::faults::Extent;
using corvane::faults::kSetups;
using corvane::faults::Trial;

const char* const kReplyFaults[] = {"corrupt@%u",   "drop@%u",      "repeat@%u",    "cut@%u",
                                    "delay@%u=300", "delay@%u=700", "delay@%u=4000"};
const char* const kByteFaults[] = {"corrupt-byte@%u", "drop-byte@%u", "unplug-byte@%u"};
const char* const kSiteFaults[] = {"missing ",    "missing /firmware/firmware.inf", "missing /f/a.hex",
                                   "stall ",      "stall /firmware/firmware.inf",   "stall /f/a.hex",
                                   "cut /f/a.hex"};
constexpr std::int64_t kKillStep = 40;  // ms between two moments at which the program is killed

std::string at(const char* notation, std::size_t place) {
    char text[64];
    std::snprintf(text, sizeof text, notation, static_cast<unsigned>(place));
    return text;
}

std::vector<Trial> singles() {
    std::vector<Trial> all;
    for (std::size_t setup = 0; setup < kSetups.size(); ++setup) {
        const auto extent = corvane::faults::extentOf(setup);
        for (std::size_t k = 1; k <= extent.replies; ++k) {
            for (const auto* fault : kReplyFaults) all.push_back({setup, {at(fault, k)}, {}, {}});
        }
        for (std::size_t k = 1; k <= extent.bytes; ++k) {
            for (const auto* fault : kByteFaults) all.push_back({setup, {at(fault, k)}, {}, {}});
        }
        for (std::int64_t ms = 0; ms < extent.ms; ms += kKillStep) all.push_back({setup, {}, ms, {}});
        if (!kSetups[setup].isOnLine) continue;
        for (const auto* fault : kSiteFaults) all.push_back({setup, {}, {}, fault});
    }
    return all;
}

Trial randomTrial(std::mt19937& random, const std::vector<Extent>& extents) {
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    Trial trial;
    trial.setup = below(kSetups.size());
    const auto& extent = extents[trial.setup];
    for (int i = 0; i < 5; ++i) {
        const auto what = below(20);
        if (what == 0) {
            trial.killedAt = static_cast<std::int64_t>(below(static_cast<std::size_t>(extent.ms)));
        } else if (what == 1 && kSetups[trial.setup].isOnLine) {
            trial.siteFault = kSiteFaults[below(std::size(kSiteFaults))];
        } else if (what < 8) {
            trial.faults.push_back(at(kByteFaults[below(std::size(kByteFaults))], 1 + below(extent.bytes)));
        } else if (what < 12) {
            trial.faults.push_back(at(below(2) ? "nak@%u" : "mute@%u", 1 + below(7)));
        } else {
            trial.faults.push_back(at(kReplyFaults[below(std::size(kReplyFaults))], 1 + below(extent.replies)));
        }
    }
    return trial;
}

/// Counts, and says what did not hold.
class Tally {
public:
    void hold(const Trial& trial) {
        ++tried_;
        const auto wrong = corvane::faults::violation(trial);
        if (wrong.empty()) return;
        if (++failed_ <= 60) std::printf("VIOLATED by %s: %s\n", trial.text().c_str(), wrong.c_str());
    }

    void print(const char* what) const { std::printf("%s: %d tried, %d survived\n", what, tried_, tried_ - failed_); }
    bool isClean() const { return failed_ == 0; }

private:
    int tried_ = 0;
    int failed_ = 0;
};

long number(int argc, char** argv, const char* option, long byDefault) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], option) == 0) return std::atol(argv[i + 1]);
    }
    return byDefault;
}

}  // namespace

int main(int argc, char** argv) {
    const auto step = static_cast<std::size_t>(number(argc, argv, "--single-step", 1));
    const long count = number(argc, argv, "--random", 10000);
    std::mt19937 random(static_cast<unsigned>(number(argc, argv, "--seed", 1)));

    Tally single;
    const auto all = singles();
    for (std::size_t i = 0; i < all.size(); i += step) single.hold(all[i]);
    single.print("single faults");

    std::vector<Extent> extents;
    for (std::size_t setup = 0; setup < kSetups.size(); ++setup) extents.push_back(corvane::faults::extentOf(setup));
    Tally combined;
    for (long i = 0; i < count; ++i) combined.hold(randomTrial(random, extents));
    combined.print("combinations of five");
    return single.isClean() && combined.isClean() ? 0 : 1;
}
