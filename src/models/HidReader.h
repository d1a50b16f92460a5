#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "cable/HidReport.h"
#include "models/Peer.h"

namespace corvane::models {

/// How a reader presents itself, and what it refuses. Texts are Windows-1252.
struct HidReaderOptions {
    std::uint16_t vendor = 0x1209;
    std::uint16_t product = 5;
    std::string manufacturer = "Corvane";
    std::string name = "Kestrel";
    std::string serialNumber = "K0001";
    std::string version = "KESTREL V2.4";
    std::uint8_t direction = 0x13;  ///< bit 0 serial, 1 PS/2, 2 HID extra, 4 a keyboard is present

    std::map<std::uint8_t, int> refusals;  ///< command code: so many times from now on
    std::set<std::uint8_t> mutes;          ///< command codes that are never answered
    Micros replyDelay = 0;
};

/// A simulated HID reader of the Kestrel family between the host's reports and a line with a device at its end (neither
/// owned). It carries the data stream at the rate that command 1 has set, answers the commands on the control channel,
/// and takes and gives one report a millisecond, as a full-speed USB device does. It is plugged in while the line is.
class HidReader {
public:
    HidReader(Peer& line, HidReaderOptions options);

    /// From when on it takes another output report; the host has to wait until then.
    Micros acceptsAt() const;
    bool accepts(Micros now) const { return now >= acceptsAt(); }

    /// An output report, whatever it holds.
    void hear(Micros now, const HidReport& report);

    /// When it next has a report to give or something to do.
    std::optional<Micros> nextAt() const;

    /// The next input report, if there is one by now.
    std::optional<HidReport> speak(Micros now);

    bool isPlugged() const { return line_.isPlugged(); }

    /// Starts anew, as after it was plugged in: nothing is under way, and its settings are the first ones.
    void restart();

    /// The clear-to-send line that the reader reports.
    void clearToSend(bool on) { states_.push_back(on); }

    HidReaderOptions& options() { return options_; }
    std::uint32_t baudRate() const { return baudRate_; }
    std::uint8_t currentDirection() const { return currentDirection_; }
    bool breakState() const { return break_; }
    const std::vector<Bytes>& commands() const { return commands_; }  ///< every command frame, in order
    Bytes& registers() { return registers_; }

private:
    struct Reply {
        Micros at;
        Bytes bytes;
    };

    void forget();
    void advance(Micros now);
    void answer(Micros now, const Bytes& frame);
    Bytes replyTo(std::uint8_t code, const Bytes& parameters, Micros now);
    Bytes setBaudRate(const Bytes& parameters, Micros now);
    Bytes getRegister(const Bytes& parameters) const;
    Bytes setRegister(const Bytes& parameters);

    Peer& line_;
    HidReaderOptions options_;
    std::uint32_t baudRate_;
    std::uint8_t currentDirection_;
    bool break_ = false;
    Bytes registers_;
    Bytes frame_;  // a command whose end has not come yet
    std::vector<Bytes> commands_;
    std::deque<Reply> replies_;
    std::deque<HidReport> control_;
    std::deque<bool> states_;
    Bytes toHost_;
    Micros lineFreeAt_ = 0;
    Micros inFreeAt_ = 0;
    Micros outFreeAt_ = 0;
};

}  // namespace corvane::models
