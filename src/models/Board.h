#pragma once

#include <optional>
#include <string>

#include "models/DeviceLog.h"
#include "models/Faults.h"
#include "models/Flash.h"
#include "models/Voice.h"

namespace corvane::models {

/// Kinds of devices. "boot" has a boot loader and nothing else; "silent" hears and never answers; "babbling" never
/// stops talking and never answers.
enum class Kind { tarnPlus, tarn, boot, silent, babbling };

/// What a device does when the host's line rate is not its own: nothing, or a few meaningless bytes.
enum class WrongRate { silence, garbage };

/// How a device is made. Texts are Windows-1252.
struct DeviceOptions {
    Kind kind = Kind::tarnPlus;
    std::string version = "TARN-R200 V5.1R23";
    std::string nextVersion;              ///< after an image was programmed and started; empty: the version stays
    bool versionEndsInNul = true;         ///< the TarnPlus version reply carries a final 0x00
    std::optional<std::string> password;  ///< without one no login is asked for
    std::uint32_t baud = 19200;           ///< the application's rate
    std::uint32_t bootBaud = 0;           ///< the boot loader's; 0: the same
    std::string prompt = "AVR>";
    bool startsInBoot = false;  ///< with an application that is not running
    WrongRate wrongRate = WrongRate::silence;
    Faults faults;
};

/// What the parts of one device share.
struct Board {
    explicit Board(DeviceOptions given) : options(std::move(given)), faults(options.faults), voice(faults, log) {}
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;

    /// Answers the host; a fault may unplug the device instead.
    void reply(Micros now, const Bytes& bytes) {
        if (!voice.reply(now, bytes)) isPlugged = false;
    }

    DeviceOptions options;
    Faults faults;
    DeviceLog log;
    Voice voice;
    Flash flash;
    std::string version = options.version;
    bool isPlugged = true;
};

/// What a program on the device wants after a byte.
enum class Next { goOn, enterBoot, startApplication };

/// A program that runs on the device: an application or the boot loader. Bytes come at the program's own rate.
class Program {
public:
    virtual ~Program() = default;
    virtual void start(Micros now) = 0;
    virtual Next hear(Micros now, std::uint8_t byte) = 0;

    /// Forgets a frame, command or record that has begun.
    virtual void abandon() = 0;
};

}  // namespace corvane::models
