#pragma once

#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

#include "bench/BenchOptions.h"
#include "bench/ChildProcess.h"
#include "bench/OpenWatch.h"
#include "bench/Outlet.h"
#include "bench/ReaderSocket.h"

namespace corvane::bench {

/// The whole bench: the devices on their ports, the configuration that shows them to a program, and, when asked for,
/// that program. The constructor throws std::runtime_error (std::system_error among them) when something cannot be had.
class Bench {
public:
    explicit Bench(const BenchOptions& options);
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    /// Open for further descriptors and moments.
    Loop& loop() { return loop_; }
    const std::vector<std::unique_ptr<Outlet>>& outlets() const { return outlets_; }
    const std::string& configFolder() const { return config_.path(); }

    /// What a program needs in its environment to see the simulated devices and no others.
    Variables variables() const;

    /// Runs until the command has ended, or until SIGINT, SIGTERM or SIGHUP when there is none, then reports. Returns
    /// the exit status.
    int run(std::ostream& report);

    static constexpr int kMemoryDiffers = 10;
    static constexpr int kDeparted = 11;

private:
    void plugIn(const DeviceSpec& spec, std::unique_ptr<models::ReplayThen> recorded = nullptr);
    void replay();
    bool reportReplays(std::ostream& report) const;
    void writePorts() const;
    void writeReadyFile() const;
    void recordTo(const std::string& path);
    int endOfCommand();
    void takeSignal(int number, bool fromTerminal);
    bool reportMemories(std::ostream& report) const;

    BenchOptions options_;
    std::optional<models::Image> image_;
    Loop loop_;
    OpenWatch watch_;
    ConfigFolder config_;
    std::ofstream transcript_;
    std::optional<ReaderSocket> readers_;  // none without HID readers
    std::vector<std::unique_ptr<Outlet>> outlets_;
    std::optional<ChildProcess> child_;
};

}  // namespace corvane::bench
