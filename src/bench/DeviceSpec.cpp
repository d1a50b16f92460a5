#include "bench/DeviceSpec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <stdexcept>

#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane::bench {
namespace {

using models::Kind;
using models::WrongRate;

constexpr std::size_t kLongestReaderText = 126;  // of a USB string

[[noreturn]] void complain(const std::string& key, const std::string& what) {
    throw std::invalid_argument("device: \"" + key + "\" " + what);
}

std::uint32_t number(const std::string& key, const std::string& value, std::uint32_t least, std::uint32_t most) {
    std::uint32_t result = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), result);
    if (error != std::errc() || end != value.data() + value.size() || result < least || result > most) {
        complain(key, "takes a number from " + std::to_string(least) + " to " + std::to_string(most) + ", not \"" +
                          value + "\"");
    }
    return result;
}

/// The index of the word that the value is, in any case.
std::size_t choice(const std::string& key, const std::string& value, const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (equalsNoCase(words[i], value)) return i;
    }
    complain(key, "is " + joined(words, ", ") + ", not \"" + value + "\"");
}

/// One that fits the socket's list and the reader's reply.
std::string readerText(const std::string& key, const std::string& value) {
    auto text = fromUtf8(value);
    const bool isLong = text.size() > kLongestReaderText;
    if (isLong || std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20; })) {
        complain(key, "takes up to " + std::to_string(kLongestReaderText) + " printable characters");
    }
    return text;
}

struct Key {
    const char* name;
    const char* help;
    void (*set)(DeviceSpec& spec, const std::string& key, const std::string& value);
};

constexpr std::uint32_t kFastest = 4000000;
constexpr std::uint32_t kLongest = 3600000;

const std::array kKeys{
    Key{"kind", "TarnPlus (default), Tarn, boot, silent or babbling",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            constexpr std::array kinds{Kind::tarnPlus, Kind::tarn, Kind::boot, Kind::silent, Kind::babbling};
            spec.device.kind = kinds[choice(key, value, {"TarnPlus", "Tarn", "boot", "silent", "babbling"})];
        }},
    Key{"hid", "yes or no (default): behind a HID reader; these are HID1 and so on",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.isReader = choice(key, value, {"no", "yes"}) == 1;
        }},
    Key{"reader", "the HID reader's product text (default Kestrel)",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.reader.name = readerText(key, value);
        }},
    Key{"reader-version", "the HID reader's own version (default KESTREL V2.4)",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.reader.version = readerText(key, value);
        }},
    Key{"port", "the N of COMn (default: the lowest free one)",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.port = static_cast<int>(number(key, value, 1, 256));
        }},
    Key{"baud", "the application's line rate (default 19200)",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.device.baud = number(key, value, 50, kFastest);
        }},
    Key{"boot-baud", "the boot loader's line rate (default: as baud)",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.device.bootBaud = number(key, value, 50, kFastest);
        }},
    Key{"prompt", "M51>, AVR> (default) or ARM>",
        [](DeviceSpec& spec, const std::string&, const std::string& value) { spec.device.prompt = fromUtf8(value); }},
    Key{"version", "the version text (default TARN-R200 V5.1R23)",
        [](DeviceSpec& spec, const std::string&, const std::string& value) { spec.device.version = fromUtf8(value); }},
    Key{"next-version", "the version text after an update (default: as before)",
        [](DeviceSpec& spec, const std::string&, const std::string& value) {
            spec.device.nextVersion = fromUtf8(value);
        }},
    Key{"version-nul", "yes (default) or no: the version reply ends in 0x00",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.device.versionEndsInNul = choice(key, value, {"no", "yes"}) == 1;
        }},
    Key{"password", "demands a login before the switch",
        [](DeviceSpec& spec, const std::string&, const std::string& value) { spec.device.password = fromUtf8(value); }},
    Key{"in-boot", "yes or no (default): found in its boot loader",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.device.startsInBoot = choice(key, value, {"no", "yes"}) == 1;
        }},
    Key{"wrong-rate", "silence (default) or garbage, at other line rates",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.device.wrongRate =
                choice(key, value, {"silence", "garbage"}) == 1 ? WrongRate::garbage : WrongRate::silence;
        }},
    Key{"fault", "one of the faults below; may be given again",
        [](DeviceSpec& spec, const std::string&, const std::string& value) {
            spec.device.faults.add(fromUtf8(value));
        }},
    Key{"replug", "ms after which an unplugged device comes back (default: never)",
        [](DeviceSpec& spec, const std::string& key, const std::string& value) {
            spec.replugMs = static_cast<int>(number(key, value, 0, kLongest));
        }},
};

/// The pieces between the commas that have no backslash ahead.
std::vector<std::string> pieces(std::string_view text) {
    std::vector<std::string> result(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == ',' || text[i + 1] == '\\')) {
            result.back() += text[++i];
        } else if (text[i] == ',') {
            result.emplace_back();
        } else {
            result.back() += text[i];
        }
    }
    return result;
}

}  // namespace

DeviceSpec deviceSpec(std::string_view text) {
    DeviceSpec spec;
    spec.reader.vendor = CORVANE_MAKER_VENDOR_ID;
    std::set<std::string> seen;
    if (text.empty()) return spec;
    for (const auto& piece : pieces(text)) {
        const auto equals = piece.find('=');
        const std::string name = piece.substr(0, equals);
        const auto key = std::find_if(kKeys.begin(), kKeys.end(), [&](const Key& one) { return one.name == name; });
        if (key == kKeys.end()) complain(name, "is no key");
        if (equals == std::string::npos) complain(name, "has no value");
        if (!seen.insert(name).second && name != "fault") complain(name, "is given twice");
        key->set(spec, name, piece.substr(equals + 1));
    }
    if (spec.isReader && spec.port) complain("port", "is for serial ports; HID readers are numbered as they are given");
    for (const char* name : {"reader", "reader-version"}) {
        if (!spec.isReader && seen.count(name)) complain(name, "needs hid=yes");
    }
    return spec;
}

std::string deviceSpecHelp() {
    std::string lines;
    for (const auto& key : kKeys) {
        std::string name = key.name;
        name.resize(16, ' ');
        lines += "  " + name + key.help + "\n";
    }
    return lines;
}

}  // namespace corvane::bench
