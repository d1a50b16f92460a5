#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "models/PacedLine.h"
#include "support/Program.h"
#include "text/Text.h"

/// Runs whole updates with every fault at every step, and with random combinations of five, and holds each against the
/// rule: the run ends and says what happened; status and verdict agree with the device's true state; nothing partial is
/// left on disk; a next run brings the device back. Prints how many were tried and how many held it. Exit status 1 when
/// one did not.
///
///     fault_matrix [--single-step N] [--random N] [--seed N]
///
/// A step of 1 tries every single fault, 10 every tenth one.
namespace {

using namespace corvane;

constexpr char kImage[] =
    "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n"
    ":0400000001020304F2\n:0400100005060708D2\n:04002000090A0B0CB2\n:020000040001F9\n:0400000011121314B2\n"
    ":040010001516171892\n:00000001FF\n";
constexpr char kSection[] = "[PGM_A]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/f/a.hex\nISP_BAUDRATE=57600\n";
constexpr char kSite[] = "ftp://u:p@h";
constexpr std::int64_t kLongestRun = 30 * 60 * 1000;  // ms, of everything that one update may take
constexpr std::int64_t kKillStep = 40;                // ms between two moments at which the program is killed

/// A kind of device and the way to it.
const struct Setup {
    const char* name;
    models::Kind kind;
    std::uint32_t baud, bootBaud;
    const char* password;
    bool isOnLine;
} kSetups[] = {
    {"TarnPlus at 19200", models::Kind::tarnPlus, 19200, 19200, "", false},
    {"with a password", models::Kind::tarnPlus, 19200, 19200, "quill", false},
    {"boot loader at 115200", models::Kind::tarnPlus, 19200, 115200, "", false},
    {"Tarn at 9600", models::Kind::tarn, 9600, 9600, "", false},
    {"on line, boot loader at 57600", models::Kind::tarnPlus, 38400, 57600, "", true},
};

constexpr const char* kReplyFaults[] = {"corrupt@%u",   "drop@%u",      "repeat@%u",    "cut@%u",
                                        "delay@%u=300", "delay@%u=700", "delay@%u=4000"};
constexpr const char* kByteFaults[] = {"corrupt-byte@%u", "drop-byte@%u", "unplug-byte@%u"};
constexpr const char* kSiteFaults[] = {"missing ",    "missing /firmware/firmware.inf", "missing /f/a.hex",
                                       "stall ",      "stall /firmware/firmware.inf",   "stall /f/a.hex",
                                       "cut /f/a.hex"};

/// One update with what goes wrong in it.
struct Trial {
    const Setup* setup;
    std::vector<std::string> faults = {};       ///< of the device and its line
    std::optional<std::int64_t> killedAt = {};  ///< ms: the program is gone from then on, and a fresh one is started
    std::string siteFault = {};                 ///< "missing PATH", "stall PATH", "cut PATH"; empty for none

    std::string text() const {
        return setup->name + (": " + joined(faults, " ")) +
               (killedAt ? " killed at " + std::to_string(*killedAt) + " ms" : "") + " " + siteFault;
    }
};

/// Thrown from the middle of a run in place of a SIGKILL: nothing of the program catches it.
struct Killed {};

/// One program between a device and a site, and what is left when it is gone.
struct World : fakes::AppBench {
    explicit World(const Trial& trial)
        : setup_(*trial.setup), device_(plug(optionsOf(setup_))), line_(device_, setup_.baud) {
        old_ = device_.flash().contents();
        serial.control.plug(1, line_);
        serve();
        for (const auto& fault : trial.faults) device_.faults().add(fault);
        const auto blank = trial.siteFault.find(' ');
        if (blank == std::string::npos) return;
        auto& answer = reader.answers[kSite + trial.siteFault.substr(blank + 1)];
        const auto what = trial.siteFault.substr(0, blank);
        if (what == "missing") answer.content.clear();
        if (what == "stall") answer.ends = false;
        if (what == "cut") answer.isSizeKnown = false;
    }

    /// The next morning: the faults are gone, the device is plugged in.
    void mend() {
        runtime.Sleep(10000);
        device_.faults() = {};
        if (!device_.isPlugged()) device_.plugIn(runtime.micros());
        serve();
    }

    /// A run of a fresh program, and what is wrong about its end.
    std::string run(bool force, std::optional<std::int64_t> killedAt) {
        fakes::Program program(*this);
        program.presenter.account("h", "u", "p");
        if (!setup_.isOnLine) program.loadImage(kImage);
        const auto start = runtime.ms();
        runtime.setPump([this, start, killedAt] {
            if (killedAt && runtime.ms() - start >= *killedAt) throw Killed{};
            if (runtime.ms() - start > kLongestRun) throw std::runtime_error("the run does not end");
        });
        for (const auto& [address, answer] : reader.answers) {  // somebody presses Cancel after a minute
            if (!answer.ends) runtime.at(start + 60000, [&program] { program.presenter.cmdCancel_Click(); });
        }
        std::string wrong;
        try {
            const auto outcome = program.start(force);
            isUpdated_ = outcome.end == RunEnd::updated;
            wrong = disagreement(outcome, program.updater.conclude(outcome));
        } catch (const Killed&) {
            isUpdated_ = false;
            if (serial.control.PortOpen()) serial.control.PortOpen(false);  // as the system closes it
            if (!isOld() && !isInJournal() && !isRight()) wrong = "killed, and the journal does not know";
        }
        runtime.setPump(nullptr);
        for (const auto& [name, whole] : {std::pair("firmware.inf", kSection), {"Download/a.hex", kImage}}) {
            const auto content = fakes::ScratchFolder::content(folder.folder.at(name));
            if (content != "(none)" && content != whole) wrong = "a part is left: " + std::string(name);
        }
        return wrong.empty() ? "" : wrong + "; log: " + face.log;
    }

    bool isUpdated() const { return isUpdated_; }
    bool isInJournal() { return !RunJournal(folder, files, processes).left().empty(); }
    const models::Device& device() const { return device_; }
    std::int64_t ms() const { return runtime.ms(); }

private:
    static models::DeviceOptions optionsOf(const Setup& setup) {
        models::DeviceOptions options{
            .kind = setup.kind, .nextVersion = "TARN-R200 V5.2R1", .baud = setup.baud, .bootBaud = setup.bootBaud};
        if (*setup.password) options.password = setup.password;
        return options;
    }

    void serve() {
        const std::string site = kSite;
        reader.answers = {
            {site, {"listing"}}, {site + "/firmware/firmware.inf", {kSection}}, {site + "/f/a.hex", {kImage}}};
    }

    bool isOld() const { return device_.flash().contents() == old_; }
    bool isRight() const { return memoryFault(kImage).empty(); }

    std::string disagreement(const Outcome& outcome, const Verdict& verdict) {
        using Kind = Verdict::Kind;
        const bool isUpdated = verdict.kind == Kind::updated;
        const bool wasErased = outcome.facts.repeatedRecords.has_value();
        const int status = exitStatus(outcome);
        if ((status == 0) != isUpdated || (verdict.kind == Kind::waiting && status != 5))
            return "exit status " + std::to_string(status) + " beside the verdict " + verdictName(verdict.kind);
        if (isUpdated && !isRight()) return "updated, but " + memoryFault(kImage);
        if (verdict.kind == Kind::untouched && (!isOld() || (device_.isInBoot() && device_.isPlugged())))
            return "untouched, but it is not";
        if (verdict.kind == Kind::uncertain && !isOld()) return "uncertain, but its firmware is gone";
        if (verdict.kind == Kind::waiting && !wasErased && !isOld()) return "its firmware is not there";
        if (!isUpdated && verdict.facts.empty()) return "no reason is given";
        if (wasErased && !isUpdated && !isInJournal()) return "the journal does not know";
        return face.log.empty() ? "nothing was logged" : "";
    }

    const Setup& setup_;
    models::Device& device_;
    models::PacedLine line_;
    std::map<std::uint32_t, std::uint8_t> old_;
    bool isUpdated_ = false;
};

std::string violation(const Trial& trial) try {
    World world(trial);
    if (auto wrong = world.run(false, trial.killedAt); !wrong.empty()) return wrong;
    world.mend();
    if (auto wrong = world.run(true, std::nullopt); !wrong.empty()) return "the next run: " + wrong;
    if (!world.isUpdated()) return "the next run does not bring it back";
    return world.isInJournal() ? "the journal still knows a device that is well" : "";
} catch (const std::exception& error) {
    return error.what();
}

/// How much there is to go wrong in a run without faults.
struct Extent {
    explicit Extent(const Setup& setup) {
        World world({&setup});
        const auto wrong = world.run(false, std::nullopt);
        if (!world.isUpdated())
            throw std::runtime_error(std::string(setup.name) + ": a run without faults fails: " + wrong);
        replies = world.device().log().replies;
        bytes = world.device().log().bytesHeard;
        ms = world.ms();
    }

    std::size_t replies = 0, bytes = 0;
    std::int64_t ms = 0;
};

std::string at(const char* notation, std::size_t place) { return replaceAll(notation, "%u", std::to_string(place)); }

Trial randomTrial(std::mt19937& random, const std::vector<Extent>& extents) {
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    const auto oneOf = [&below](const auto& faults) { return faults[below(std::size(faults))]; };
    const auto setup = below(std::size(kSetups));
    Trial trial{&kSetups[setup]};
    const auto& extent = extents[setup];
    for (int i = 0; i < 5; ++i) {
        const auto what = below(20);
        if (what == 0) {
            trial.killedAt = static_cast<std::int64_t>(below(static_cast<std::size_t>(extent.ms)));
        } else if (what == 1 && trial.setup->isOnLine) {
            trial.siteFault = oneOf(kSiteFaults);
        } else if (what < 8) {
            trial.faults.push_back(at(oneOf(kByteFaults), 1 + below(extent.bytes)));
        } else if (what < 12) {
            trial.faults.push_back(at(below(2) ? "nak@%u" : "mute@%u", 1 + below(7)));
        } else {
            trial.faults.push_back(at(oneOf(kReplyFaults), 1 + below(extent.replies)));
        }
    }
    return trial;
}

std::vector<Trial> singles(const Setup& setup, const Extent& extent) {
    std::vector<Trial> all;
    const auto add = [&](const auto& faults, std::size_t places) {
        for (std::size_t k = 1; k <= places; ++k) {
            for (const auto* fault : faults) all.push_back({&setup, {at(fault, k)}});
        }
    };
    add(kReplyFaults, extent.replies);
    add(kByteFaults, extent.bytes);
    for (std::int64_t ms = 0; ms < extent.ms; ms += kKillStep) all.push_back({&setup, {}, ms});
    for (const auto* fault : kSiteFaults) {
        if (setup.isOnLine) all.push_back({&setup, {}, {}, fault});
    }
    return all;
}

/// How many of them did not hold.
int violated(const char* what, const std::vector<Trial>& trials) {
    int failed = 0;
    for (const auto& trial : trials) {
        const auto wrong = violation(trial);
        if (wrong.empty() || ++failed > 60) continue;
        std::printf("VIOLATED by %s: %s\n", trial.text().c_str(), wrong.c_str());
    }
    std::printf("%s: %zu tried, %zu survived\n", what, trials.size(), trials.size() - static_cast<std::size_t>(failed));
    return failed;
}

std::size_t number(int argc, char** argv, const char* option, std::size_t byDefault) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], option) == 0) return std::strtoul(argv[i + 1], nullptr, 10);
    }
    return byDefault;
}

}  // namespace

int main(int argc, char** argv) {
    const auto step = number(argc, argv, "--single-step", 1);
    std::mt19937 random(static_cast<unsigned>(number(argc, argv, "--seed", 1)));
    std::vector<Extent> extents;
    std::vector<Trial> single, combined;
    std::size_t count = 0;
    for (const auto& setup : kSetups) {
        extents.emplace_back(setup);
        for (const auto& trial : singles(setup, extents.back())) {
            if (count++ % step == 0) single.push_back(trial);
        }
    }
    while (combined.size() < number(argc, argv, "--random", 10000)) combined.push_back(randomTrial(random, extents));
    return violated("single faults", single) + violated("combinations of five", combined) == 0 ? 0 : 1;
}
