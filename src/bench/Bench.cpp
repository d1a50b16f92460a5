#include "bench/Bench.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <sys/prctl.h>

#include "bench/ReaderStation.h"
#include "bench/Report.h"
#include "bench/Signals.h"
#include "bench/Station.h"
#include "cable/HidBench.h"
#include "report/RunReport.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane::bench {
namespace {

constexpr Micros kSettling = 20000;
constexpr Micros kLongestSettling = 1000000;
constexpr char kLibraryVariable[] = "CORVANE_VELLIO";

std::optional<models::Image> readImage(const std::string& path) {
    if (path.empty()) return std::nullopt;
    try {
        return models::imageOf(readFile(path));
    } catch (const RuntimeError& error) {
        throw std::runtime_error(path + ": " + error.description());
    }
}

/// The bench's build of the HID transport library, beside the bench or where it was installed; empty when it is at
/// neither place.
std::string transportLibrary() {
    namespace fs = std::filesystem;
    std::error_code error;
    const auto folder = fs::read_symlink("/proc/self/exe", error).parent_path();
    for (const auto& place : {folder, folder / CORVANE_PRIVATE_LIB_RELATIVE}) {
        const auto library = (place / "bench/VellIO.so").lexically_normal();
        if (fs::exists(library, error)) return library.string();
    }
    return {};
}

}  // namespace

Bench::Bench(const BenchOptions& options)
    : options_(options), image_(readImage(options.image)), config_(options.configFolder) {
    loop_.watch(watch_.descriptor(), [this] { watch_.take(); });
    for (const auto& spec : options_.devices) plugIn(spec);
    if (!options_.replay.empty()) replay();
    recordTo(options_.transcript);
    writePorts();
    config_.writeSettings(options_.settings);
}

void Bench::plugIn(const DeviceSpec& spec, std::unique_ptr<models::ReplayThen> recorded) {
    if (!spec.isReader) {
        outlets_.push_back(std::make_unique<Station>(
            loop_, watch_, spec, [this] { writePorts(); }, std::move(recorded)));
        return;
    }
    if (transportLibrary().empty()) throw std::runtime_error("bench/VellIO.so is not beside this program");
    if (!readers_) readers_.emplace(loop_, config_.path() + "/Corvane/readers");
    outlets_.push_back(std::make_unique<ReaderStation>(loop_, *readers_, spec, std::move(recorded)));
}

/// The recorded device on a port of the recorded name.
void Bench::replay() {
    using Timing = models::Replay::Timing;
    std::string why;
    const auto report = RunReport::read(readFile(options_.replay), why);
    if (!report) throw std::runtime_error(options_.replay + " " + why);
    const auto port = portOf(report->events);
    constexpr std::size_t kPrefix = 3;  // "COM", "HID"
    DeviceSpec spec;
    spec.isReader = port.compare(0, kPrefix, "HID") == 0;
    spec.port = spec.isReader ? 1 : std::atoi(port.substr(std::min(kPrefix, port.size())).c_str());
    if (spec.port <= 0) throw std::runtime_error(options_.replay + " tells of no port with a device");
    if (spec.isReader) spec.reader.serialNumber = "K1";
    plugIn(spec,
           std::make_unique<models::ReplayThen>(
               models::Replay(report->events, port, options_.isFast ? Timing::fast : Timing::recorded), options_.then));
}

/// What became of the recorded devices; False when a program departed.
bool Bench::reportReplays(std::ostream& report) const {
    bool isSame = true;
    for (const auto& outlet : outlets_) {
        if (!outlet->recorded()) continue;
        const auto& replay = outlet->recorded()->replay();
        report << outlet->name() << ": ";
        if (const auto& departure = replay.departure()) {
            isSame = false;
            report << "departs at byte " << departure->at << ", behind " << escapedBytes(departure->before)
                   << "\n  then: " << (departure->then.empty() ? "(nothing)" : escapedBytes(departure->then))
                   << "\n  now:  " << escapedBytes(departure->now) << "\n";
        } else if (replay.missing()) {
            isSame = false;
            report << "departs at byte " << replay.heard() << ": " << replay.missing()
                   << " bytes that were sent then were not sent now\n";
        } else {
            report << "sent the same " << replay.heard() << " bytes as then\n";
        }
    }
    return isSame;
}

void Bench::writePorts() const {
    std::map<int, std::string> paths;
    for (const auto& outlet : outlets_) {
        if (!outlet->spec().isReader && !outlet->path().empty()) paths[outlet->spec().port] = outlet->path();
    }
    config_.writePorts(paths);
}

Variables Bench::variables() const {
    Variables all{{"XDG_CONFIG_HOME", config_.path()}, {"XDG_DATA_HOME", config_.data()}};
    const auto library = transportLibrary();
    if (library.empty()) return all;
    all[kLibraryVariable] = library;
    all[hidbench::kSocketVariable] = readers_ ? readers_->path() : "";  // an empty path: no readers
    return all;
}

void Bench::writeReadyFile() const {
    std::string text;
    for (const auto& outlet : outlets_) text += outlet->name() + "=" + outlet->path() + "\n";
    if (readers_) {
        const auto all = variables();
        for (const char* name : {kLibraryVariable, hidbench::kSocketVariable})
            text += name + ("=" + all.at(name)) + "\n";
    }
    writeWhole(options_.readyFile, text);
}

void Bench::recordTo(const std::string& path) {
    if (!path.empty()) {
        transcript_.open(path, std::ios::binary | std::ios::trunc);
        if (!transcript_) throw std::runtime_error(path + ": cannot be written");
    }
    // What is handed over is not kept: a device that never stops talking must not fill the memory.
    for (const auto& outlet : outlets_) {
        outlet->line().transcript().handOver([this, name = outlet->name()](const models::Passage& passage) {
            if (transcript_.is_open()) transcript_ << name << textOf(passage) << '\n';
        });
    }
}

void Bench::takeSignal(int number, bool fromTerminal) {
    if (!child_) return loop_.stop();
    // A Ctrl-C that was typed at the terminal goes to every program there, the command among them.
    if (!fromTerminal) child_->signal(number);
}

int Bench::run(std::ostream& report) {
    Signals signals(loop_, [this](int number, bool fromTerminal) { takeSignal(number, fromTerminal); });
    if (!options_.readyFile.empty()) writeReadyFile();
    if (!options_.command.empty()) {
        child_.emplace(options_.command, variables());
        loop_.watch(child_->descriptor(), [this] { loop_.stop(); });
    }
    // Exact waits are for the bench alone; a command that is started after this would inherit them.
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
    loop_.run();
    int status = child_ ? endOfCommand() : 0;
    for (const auto& outlet : outlets_) outlet->line().transcript().finish();
    transcript_.flush();
    for (const auto& outlet : outlets_) {
        if (outlet->recorded()) continue;
        report << outlet->name() << ": " << countsOf(outlet->device()) << outlet->remark() << "\n";
    }
    if (child_ && status != 0) report << "The command ended with status " << status << ".\n";
    if (image_ && !reportMemories(report) && options_.verifies) status = kMemoryDiffers;
    if (!reportReplays(report)) status = kDeparted;
    report.flush();
    return status;
}

/// Its exit status, once the devices have heard what it wrote last.
int Bench::endOfCommand() {
    loop_.unwatch(child_->descriptor());
    const Micros latest = loop_.now() + kLongestSettling;
    const auto isCarrying = [](const auto& outlet) { return outlet->line().isCarrying(); };
    do {
        loop_.run(loop_.now() + kSettling);
    } while (std::any_of(outlets_.begin(), outlets_.end(), isCarrying) && loop_.now() < latest);
    return child_->status();
}

/// True when a device was programmed and none differs.
bool Bench::reportMemories(std::ostream& report) const {
    bool anyEqual = false, anyDifferent = false;
    for (const auto& outlet : outlets_) {
        const Verdict verdict = verdictOn(outlet->device(), *image_);
        report << outlet->name() << ": " << verdict.text << "\n";
        anyEqual = anyEqual || verdict.kind == Verdict::Kind::equal;
        anyDifferent = anyDifferent || verdict.kind == Verdict::Kind::different;
    }
    return anyEqual && !anyDifferent;
}

}  // namespace corvane::bench
