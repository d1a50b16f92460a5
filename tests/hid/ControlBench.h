#pragma once

#include <cstdio>
#include <deque>
#include <gtest/gtest.h>

#include "support/hid/HidBench.h"
#include "vellio/vellio.h"

namespace corvane {

using Texts = std::vector<std::string>;

/// A reader that does what the test has written down, and keeps what it was told.
class ScriptedReader : public fakes::ReportPeer {
public:
    /// Pieces of a reply on the control channel, each so many ms after the command.
    using Pieces = std::vector<std::pair<int, Bytes>>;

    explicit ScriptedReader(fakes::FakeRuntime& runtime) : runtime_(runtime) {}

    /// Replies to the commands to come, in this order; a command without one is met with silence.
    void reply(const Bytes& bytes) { reply(Pieces{{0, bytes}}); }
    void reply(Pieces pieces) { replies_.push_back(std::move(pieces)); }

    /// "A" accepts a command, "N" refuses it, and a digit is a direction.
    void reply(const char* letters) {
        for (; *letters; ++letters) {
            const auto direction = static_cast<std::uint8_t>(*letters - '0');
            reply(*letters == 'A' ? Bytes{6, 0} : *letters == 'N' ? Bytes{21, 0} : Bytes{6, 1, direction});
        }
    }
    void say(HidReportId id, const Bytes& bytes, int ms = 0) {
        coming_.emplace(runtime_.micros() + ms * 1000, hidReportOf({id, false, bytes}));
    }

    /// When each command came (ms), and its bytes, "01 04 00 00 4B 00"; also "break 01".
    std::vector<std::pair<std::int64_t, std::string>> commands;
    Bytes written;

    void hear(const HidReport& report) override {
        const auto content = hidContentOf(report).value();
        auto& bytes = content.id == HidReportId::data ? written : frame_;
        bytes.insert(bytes.end(), content.bytes.begin(), content.bytes.end());
        if (content.id == HidReportId::data || content.more) return;
        std::string text = content.id == HidReportId::line ? "break" : "";
        for (const auto byte : std::exchange(frame_, {})) {
            char digits[4];
            std::snprintf(digits, sizeof digits, " %02X", byte);
            text += digits;
        }
        commands.emplace_back(runtime_.ms(), text.substr(text[0] == ' '));
        if (content.id == HidReportId::line || replies_.empty()) return;
        for (const auto& [ms, piece] : replies_.front()) say(HidReportId::control, piece, ms);
        replies_.pop_front();
    }

    std::optional<HidReport> speak() override {
        if (coming_.empty() || coming_.begin()->first > runtime_.micros()) return std::nullopt;
        return coming_.extract(coming_.begin()).mapped();
    }

private:
    fakes::FakeRuntime& runtime_;
    Bytes frame_;
    std::deque<Pieces> replies_;
    std::multimap<fakes::Micros, HidReport> coming_;
};

/// The control with the scripted reader as HID1.
struct ControlBench : fakes::HidControlBench {
    ScriptedReader reader{runtime};

    explicit ControlBench(bool userMode = true, const Texts& without = {}) : HidControlBench(false, without) {
        plug("Kestrel", 5);  // before the library looks, so that it is no news
        start(userMode);
    }

    void plug(const std::string& product, std::uint16_t productId) {
        bus.plug({"/dev/hidraw1", 0x1209, productId, "Corvane", product, "K1"}, reader);
    }

    /// Opens HID1 with a reader that replies so.
    void openWith(const char* replies) {
        reader.reply(replies);
        control->CommPort("HID1");
        control->PortOpen(true);
    }

    /// Opens it with one that accepts everything; forgets what was sent.
    void open() {
        openWith("AA7");
        EXPECT_TRUE(control->PortOpen());
        reader.commands.clear();
    }

    /// What was sent since the last call, with times from start on (ms): "0 CB 00, 50 05 00".
    std::string sent(std::int64_t start = 0) {
        std::string text;
        for (const auto& [ms, bytes] : std::exchange(reader.commands, {})) {
            text += (text.empty() ? "" : ", ") + std::to_string(ms - start) + " " + bytes;
        }
        return text;
    }

    /// The reader's serial, PS/2 and extra direction as they were at opening: "011".
    std::string direction() const {
        return std::to_string(control->KestrelDefaultSerialTo()) + std::to_string(control->KestrelDefaultPS2To()) +
               std::to_string(control->KestrelDefaultHIDExTo());
    }
};

}  // namespace corvane
