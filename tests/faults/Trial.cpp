#include "faults/Trial.h"

#include "models/Device.h"
#include "models/Flash.h"
#include "models/PacedLine.h"
#include "support/Program.h"
#include "text/Text.h"

namespace corvane::faults {
namespace {

constexpr char kImage[] =
    "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n"
    ":0400000001020304F2\n:0400100005060708D2\n:04002000090A0B0CB2\n:020000040001F9\n:0400000011121314B2\n"
    ":040010001516171892\n:00000001FF\n";
constexpr char kSection[] = "[PGM_A]\nPRODUCT=TARN-R200\nVERSION=V5.2R1\nDESC=d\nFILE=/f/a.hex\nISP_BAUDRATE=57600\n";
constexpr char kSite[] = "ftp://u:p@h";
constexpr std::int64_t kLongestRun = 30 * 60 * 1000;  // ms, of everything that one update may take

/// Thrown from the middle of a run in place of a SIGKILL: nothing of the program catches it.
struct Killed {};

models::DeviceOptions optionsOf(const Setup& setup) {
    models::DeviceOptions options;
    options.kind = setup.isTarn ? models::Kind::tarn : models::Kind::tarnPlus;
    options.version = "TARN-R200 V5.1R23";
    options.nextVersion = "TARN-R200 V5.2R1";
    options.baud = setup.baud;
    options.bootBaud = setup.bootBaud;
    if (setup.wantsPassword) options.password = "quill";
    return options;
}

/// One program between a device and a site, and what is left when it is gone.
class World {
public:
    explicit World(const Setup& setup) : setup_(setup), device_(optionsOf(setup)), line_(device_, setup.baud) {
        old_ = device_.flash().contents();
        bench_.serial.plug(1, line_);
        image_ = bench_.folder.folder.file("local.hex", kImage);
        serve();
    }

    void add(const Trial& trial) {
        for (const auto& fault : trial.faults) device_.faults().add(fault);
        const auto blank = trial.siteFault.find(' ');
        if (blank == std::string::npos) return;
        auto& answer = bench_.reader.answers[kSite + trial.siteFault.substr(blank + 1)];
        const auto what = trial.siteFault.substr(0, blank);
        if (what == "missing") answer.content.clear();
        if (what == "stall") answer.ends = false;
        if (what == "cut") answer.isSizeKnown = false;
    }

    /// The next morning: the faults are gone, the device is plugged in.
    void mend() {
        bench_.runtime.Sleep(10000);
        device_.faults() = {};
        if (!device_.isPlugged()) device_.plugIn(bench_.runtime.micros());
        serve();
    }

    /// A run of a fresh program; nothing when it was killed.
    std::optional<Outcome> run(bool force, std::optional<std::int64_t> killedAt) {
        fakes::Program program(bench_);
        auto& presenter = program.presenter;
        presenter.account("h", "u", "p");
        if (!setup_.isOnLine) {
            presenter.optLine_Click(true);
            presenter.loadFile(image_);
        }
        const auto start = bench_.runtime.ms();
        bench_.runtime.setPump([this, start, killedAt] {
            if (killedAt && bench_.runtime.ms() - start >= *killedAt) throw Killed{};
            if (bench_.runtime.ms() - start > kLongestRun) throw std::runtime_error("the run does not end");
        });
        cancelStalls(presenter);
        std::optional<Outcome> outcome;
        try {
            outcome = program.start(force);
            verdict_ = program.updater.conclude(*outcome);
        } catch (const Killed&) {
            outcome.reset();
            if (bench_.serial.control.PortOpen()) bench_.serial.control.PortOpen(false);  // as the system closes it
        }
        bench_.runtime.setPump(nullptr);
        return outcome;
    }

    std::string memoryFault() const {
        const auto text = models::comparison(device_.flash(), models::imageOf(kImage));
        return text == "memory equals image" ? "" : text;
    }

    bool isOldFirmware() const { return device_.flash().contents() == old_; }
    const models::Device& device() const { return device_; }
    const Verdict& verdict() const { return verdict_; }
    const std::string& log() const { return bench_.face.log; }
    std::int64_t ms() const { return bench_.runtime.ms(); }
    bool isInJournal() const { return !RunJournal(bench_.folder).read().empty(); }

    /// What lies in the program's folder and is not whole.
    std::string partialFile() const {
        for (const auto& [name, whole] : {std::pair("firmware.inf", kSection), {"Download/a.hex", kImage}}) {
            const auto content = fakes::ScratchFolder::content(bench_.folder.folder.at(name));
            if (content != "(none)" && content != whole) return name;
        }
        return {};
    }

private:
    void serve() {
        const std::string site = kSite;
        bench_.reader.answers = {
            {site, {"listing"}}, {site + "/firmware/firmware.inf", {kSection}}, {site + "/f/a.hex", {kImage}}};
    }

    /// Somebody presses Cancel when a transfer has stood still for a minute.
    void cancelStalls(MainPresenter& presenter) {
        for (const auto& [address, answer] : bench_.reader.answers) {
            if (!answer.ends)
                bench_.runtime.at(bench_.runtime.ms() + 60000, [&presenter] { presenter.cmdCancel_Click(); });
        }
    }

    Setup setup_;
    fakes::AppBench bench_;
    models::Device device_;
    models::PacedLine line_;
    std::map<std::uint32_t, std::uint8_t> old_;
    std::string image_;
    Verdict verdict_;
};

std::string disagreement(const World& world, const Outcome& outcome) {
    using Kind = Verdict::Kind;
    const auto& device = world.device();
    const auto kind = world.verdict().kind;
    const bool isOld = world.isOldFirmware(), isUpdated = kind == Kind::updated;
    const bool wasErased = outcome.facts.repeatedRecords.has_value();
    const int status = exitStatus(outcome);
    if ((status == 0) != isUpdated || (kind == Kind::waiting && status != 5))
        return "exit status " + std::to_string(status) + " beside the verdict " + verdictName(kind);
    if (isUpdated && !world.memoryFault().empty()) return "updated, but " + world.memoryFault();
    if (kind == Kind::untouched && (!isOld || (device.isInBoot() && device.isPlugged())))
        return "untouched, but it is not";
    if (kind == Kind::uncertain && !isOld) return "uncertain, but its firmware is gone";
    if (kind == Kind::waiting && !wasErased && !isOld) return "its firmware is not there";
    if (!isUpdated && world.verdict().facts.empty()) return "no reason is given";
    if (wasErased && !isUpdated && !world.isInJournal()) return "the journal does not know";
    return {};
}

}  // namespace

const std::vector<Setup> kSetups = {
    {"TarnPlus at 19200", false, 19200, 19200, false, false},
    {"with a password", false, 19200, 19200, true, false},
    {"boot loader at 115200", false, 19200, 115200, false, false},
    {"Tarn at 9600", true, 9600, 9600, false, false},
    {"on line, boot loader at 57600", false, 38400, 57600, false, true},
};

std::string Trial::text() const {
    auto text = std::string(kSetups[setup].name) + ":";
    for (const auto& fault : faults) text += " " + fault;
    if (killedAt) text += " killed at " + std::to_string(*killedAt) + " ms";
    if (!siteFault.empty()) text += " site " + siteFault;
    return text;
}

Extent extentOf(std::size_t setup) {
    World world(kSetups[setup]);
    const auto report = world.run(false, std::nullopt);
    if (!report || report->end != RunEnd::updated) throw std::runtime_error("a run without faults fails");
    return {world.device().log().replies, world.device().log().bytesHeard, world.ms()};
}

std::string violation(const Trial& trial) {
    try {
        World world(kSetups[trial.setup]);
        world.add(trial);
        const auto report = world.run(false, trial.killedAt);
        if (report) {
            if (world.log().empty()) return "nothing was logged";
            if (const auto wrong = disagreement(world, *report); !wrong.empty()) return wrong + "; log: " + world.log();
        } else if (!world.isOldFirmware() && !world.isInJournal() && !world.memoryFault().empty()) {
            return "killed without firmware, and the journal does not know";
        }
        if (const auto part = world.partialFile(); !part.empty()) return "a part is left: " + part;
        world.mend();
        const auto next = world.run(true, std::nullopt);
        if (!next || next->end != RunEnd::updated) return "the next run does not bring it back; log: " + world.log();
        if (!world.memoryFault().empty()) return "after the next run " + world.memoryFault();
        return world.isInJournal() ? "the journal still knows a device that is well" : "";
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace corvane::faults
