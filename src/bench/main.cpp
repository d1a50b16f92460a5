#include <exception>
#include <fstream>
#include <iostream>
#include <signal.h>
#include <stdexcept>

#include "bench/Bench.h"
#include "platform/linux/files/StandardDescriptors.h"

namespace {

constexpr int kWrongUsage = 2;
constexpr int kNotToBeHad = 1;

int runBench(const corvane::bench::BenchOptions& options) {
    corvane::bench::Bench bench(options);
    if (options.report.empty()) return bench.run(std::cout);
    std::ofstream report(options.report);
    if (!report) throw std::runtime_error(options.report + ": cannot be written");
    return bench.run(report);
}

}  // namespace

int main(int count, char** arguments) {
    corvane::fillStandardDescriptors();
    signal(SIGPIPE, SIG_IGN);
    try {
        const auto options = corvane::bench::benchOptions({arguments + 1, arguments + count});
        if (options.wantsHelp) {
            std::cout << corvane::bench::benchHelp();
            return 0;
        }
        if (options.wantsVersion) {
            std::cout << "corvane-bench " CORVANE_VERSION_TEXT "\n";
            return 0;
        }
        return runBench(options);
    } catch (const std::invalid_argument& error) {
        std::cerr << "corvane-bench: " << error.what() << "\nTry corvane-bench --help.\n";
        return kWrongUsage;
    } catch (const std::exception& error) {
        std::cerr << "corvane-bench: " << error.what() << "\n";
        return kNotToBeHad;
    }
}
