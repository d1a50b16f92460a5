#include "bench/Bench.h"

#include <algorithm>
#include <stdexcept>
#include <sys/prctl.h>

#include "bench/Report.h"
#include "bench/Signals.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane::bench {
namespace {

constexpr Micros kSettling = 20000;
constexpr Micros kLongestSettling = 1000000;

std::optional<models::Image> readImage(const std::string& path) {
    if (path.empty()) return std::nullopt;
    try {
        return models::imageOf(readFile(path));
    } catch (const RuntimeError& error) {
        throw std::runtime_error(path + ": " + error.description());
    }
}

}  // namespace

Bench::Bench(const BenchOptions& options)
    : options_(options), image_(readImage(options.image)), config_(options.configFolder) {
    loop_.watch(watch_.descriptor(), [this] { watch_.take(); });
    for (const auto& spec : options_.devices) {
        stations_.push_back(std::make_unique<Station>(loop_, watch_, spec, [this] { writePorts(); }));
    }
    recordTo(options_.transcript);
    writePorts();
    if (!options_.settings.empty()) config_.writeSettings(options_.settings);
}

void Bench::writePorts() const {
    std::map<int, std::string> paths;
    for (const auto& station : stations_) {
        if (!station->path().empty()) paths[station->spec().port] = station->path();
    }
    config_.writePorts(paths);
}

void Bench::recordTo(const std::string& path) {
    if (!path.empty()) {
        transcript_.open(path, std::ios::binary | std::ios::trunc);
        if (!transcript_) throw std::runtime_error(path + ": cannot be written");
    }
    // What is handed over is not kept: a device that never stops talking must not fill the memory.
    for (const auto& station : stations_) {
        station->line().transcript().handOver([this, name = station->name()](const models::Passage& passage) {
            if (transcript_.is_open()) transcript_ << name << textOf(passage) << '\n';
        });
    }
}

void Bench::takeSignal(int number, bool fromTerminal) {
    if (!child_) return loop_.stop();
    // What was typed at the terminal has reached the command already.
    if (!fromTerminal) child_->signal(number);
}

int Bench::run(std::ostream& report) {
    Signals signals(loop_, [this](int number, bool fromTerminal) { takeSignal(number, fromTerminal); });
    if (!options_.readyFile.empty()) {
        std::string text;
        for (const auto& station : stations_) text += station->name() + "=" + station->path() + "\n";
        writeWhole(options_.readyFile, text);
    }
    if (!options_.command.empty()) {
        child_.emplace(options_.command, "XDG_CONFIG_HOME", config_.path());
        loop_.watch(child_->descriptor(), [this] { loop_.stop(); });
    }
    // After the command was started, which would inherit it.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    loop_.run();
    int status = child_ ? endOfCommand() : 0;
    for (const auto& station : stations_) station->line().transcript().finish();
    transcript_.flush();
    for (const auto& station : stations_) report << station->name() << ": " << countsOf(station->device()) << "\n";
    if (child_ && status != 0) report << "The command ended with status " << status << ".\n";
    if (image_ && !reportMemories(report) && options_.verifies) status = kMemoryDiffers;
    report.flush();
    return status;
}

/// Its exit status, once the devices have heard what it wrote last.
int Bench::endOfCommand() {
    loop_.unwatch(child_->descriptor());
    const Micros latest = loop_.now() + kLongestSettling;
    const auto isCarrying = [](const auto& station) { return station->line().isCarrying(); };
    do {
        loop_.run(loop_.now() + kSettling);
    } while (std::any_of(stations_.begin(), stations_.end(), isCarrying) && loop_.now() < latest);
    return child_->status();
}

/// True when a device was programmed and none differs.
bool Bench::reportMemories(std::ostream& report) const {
    bool anyEqual = false, anyDifferent = false;
    for (const auto& station : stations_) {
        const Verdict verdict = verdictOn(station->device(), *image_);
        report << station->name() << ": " << verdict.text << "\n";
        anyEqual = anyEqual || verdict.kind == Verdict::Kind::equal;
        anyDifferent = anyDifferent || verdict.kind == Verdict::Kind::different;
    }
    return anyEqual && !anyDifferent;
}

}  // namespace corvane::bench
