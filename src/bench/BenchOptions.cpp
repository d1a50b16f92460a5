#include "bench/BenchOptions.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

namespace corvane::bench {
namespace {

/// The arguments one by one, "--name=value" in two.
class Arguments {
public:
    explicit Arguments(const std::vector<std::string>& all) : all_(all) {}

    bool next() {
        if (attached_) throw std::invalid_argument(name_ + " takes no value");
        if (at_ == all_.size()) return false;
        name_ = all_[at_++];
        const auto equals = name_.find('=');
        if (name_.rfind("--", 0) == 0 && equals != std::string::npos) {
            attached_ = name_.substr(equals + 1);
            name_.erase(equals);
        }
        return true;
    }
    const std::string& name() const { return name_; }
    std::string value() {
        if (attached_) return *std::exchange(attached_, std::nullopt);
        if (at_ == all_.size()) throw std::invalid_argument(name_ + " needs a value");
        return all_[at_++];
    }
    std::vector<std::string> rest() const { return {all_.begin() + static_cast<std::ptrdiff_t>(at_), all_.end()}; }

private:
    const std::vector<std::string>& all_;
    std::size_t at_ = 0;
    std::string name_;
    std::optional<std::string> attached_;
};

Setting settingOf(const std::string& text) {
    const auto slash = text.find('/');
    const auto equals = text.find('=');
    if (slash == std::string::npos || equals == std::string::npos || slash > equals || slash == 0 ||
        equals == slash + 1 || text.find_first_of("\r\n") != std::string::npos) {
        throw std::invalid_argument("--setting is SECTION/KEY=VALUE, not \"" + text + "\"");
    }
    return {text.substr(0, slash), text.substr(slash + 1, equals - slash - 1), text.substr(equals + 1)};
}

/// Readers are numbered as the transport library will find them.
void numberReaders(std::vector<DeviceSpec>& devices) {
    int last = 0;
    for (auto& device : devices) {
        if (!device.isReader) continue;
        device.port = ++last;
        device.reader.serialNumber = "K" + std::to_string(device.port);
    }
}

void givePorts(std::vector<DeviceSpec>& devices) {
    std::set<int> taken;
    for (const auto& device : devices) {
        if (!device.isReader && device.port && !taken.insert(device.port).second) {
            throw std::invalid_argument("two devices on COM" + std::to_string(device.port));
        }
    }
    int free = 1;
    for (auto& device : devices) {
        if (device.isReader || device.port) continue;
        while (!taken.insert(free).second) ++free;
        device.port = free;
    }
}

}  // namespace

BenchOptions benchOptions(const std::vector<std::string>& all) {
    BenchOptions options;
    Arguments arguments(all);
    while (arguments.next()) {
        const auto& name = arguments.name();
        if (name == "--") {
            options.command = arguments.rest();
            if (options.command.empty()) throw std::invalid_argument("no command behind \"--\"");
            break;
        }
        options.wantsHelp = name == "--help" || name == "-h";
        options.wantsVersion = name == "--version";
        if (options.wantsHelp || options.wantsVersion) return options;
        if (name == "--config-dir") {
            // The command may run elsewhere, and a relative folder is none for what reads XDG_CONFIG_HOME.
            options.configFolder = std::filesystem::absolute(arguments.value());
        } else if (name == "--device") {
            options.devices.push_back(deviceSpec(arguments.value()));
        } else if (name == "--setting") {
            options.settings.push_back(settingOf(arguments.value()));
        } else if (name == "--replay") {
            options.replay = arguments.value();
        } else if (name == "--fast") {
            options.isFast = true;
        } else if (name == "--then") {
            const auto model = arguments.value();
            options.then = deviceSpec(model.find('=') == std::string::npos ? "kind=" + model : model).device;
        } else if (name == "--image") {
            options.image = arguments.value();
        } else if (name == "--verify") {
            options.verifies = true;
        } else if (name == "--transcript") {
            options.transcript = arguments.value();
        } else if (name == "--ready-file") {
            options.readyFile = arguments.value();
        } else if (name == "--report") {
            options.report = arguments.value();
        } else {
            throw std::invalid_argument("unknown option \"" + name + "\"");
        }
    }
    if (options.replay.empty() && (options.isFast || options.then))
        throw std::invalid_argument("--fast and --then need a --replay");
    if (options.replay.empty() == options.devices.empty())
        throw std::invalid_argument(options.replay.empty() ? "no --device" : "--replay does not go with --device");
    if (options.verifies && options.image.empty()) throw std::invalid_argument("--verify needs an --image");
    givePorts(options.devices);
    numberReaders(options.devices);
    return options;
}

std::string benchHelp() {
    return "corvane-bench [OPTION]... --device SPEC [--device SPEC]... [-- COMMAND [ARGUMENT]...]\n"
           "\n"
           "Simulated devices on pseudo-terminals, or behind HID readers. COMMAND runs with an environment in which "
           "they\n"
           "are the only ones, and its exit status is passed on; without one the bench runs until SIGINT or SIGTERM.\n"
           "\n"
           "  --config-dir DIR           where to write that configuration (default: a temporary folder)\n"
           "  --replay FILE              instead of --device: answers as the device in a report or recording did, and "
           "says\n"
           "                             where the command departs from what was sent then (exit status 11)\n"
           "  --fast                     answers without the recorded delays\n"
           "  --then MODEL               goes on there as that kind of device, or a SPEC; else it says no more\n"
           "  --setting SECTION/KEY=VALUE  a line of the settings file; may be given again\n"
           "  --image FILE               an Intel HEX file; at the end each device's memory is compared with it\n"
           "  --verify                   a memory that differs, or none programmed, is exit status 10\n"
           "  --transcript FILE          every byte on every line, with its time\n"
           "  --ready-file FILE          written when the ports are there: \"COM3=/dev/pts/5\", a line each\n"
           "  --report FILE              where the report goes (default: standard output)\n"
           "  --version, --help\n"
           "\n"
           "SPEC is KEY=VALUE,KEY=VALUE,... (\"\\,\" is a comma in a value). Keys:\n" +
           deviceSpecHelp() +
           "\n"
           "A fault is NAME[@PLACE][xTIMES][=VALUE]; TIMES may be *. Without TIMES, one whose line says xN strikes\n"
           "once and every other one always. RECORD is a record's number since the erase, or its text; FUNCTION is\n"
           "hexadecimal; K counts the device's replies, or the bytes that it hears. Faults:\n" +
           models::Faults::help();
}

}  // namespace corvane::bench
