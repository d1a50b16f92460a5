#include "app/LoopbackTest.h"

#include <algorithm>

#include "platform/SerialControl.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Outcome = LoopbackTest::Row::Outcome;

constexpr std::uint32_t kRates[] = {9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};
constexpr std::size_t kValues = 256, kLoneBytes = 15;
constexpr std::int64_t kPatience = 300000;  // microseconds beyond what the line needs

/// Every value once, neighbours in different bits, and none that begin a command: a device that is there against all
/// advice does nothing.
Bytes everyValue() {
    Bytes bytes;
    for (std::size_t i = 0; i < kValues; ++i) bytes.push_back(static_cast<std::uint8_t>(i * 151));
    return bytes;
}

}  // namespace

std::string LoopbackTest::Row::words() const {
    switch (outcome) {
        case Outcome::right:
            return "right";
        case Outcome::notTaken:
            return "the line does not take it";
        case Outcome::changed:
            return "came back changed";
        case Outcome::lost:
            break;
    }
    return std::to_string(received) + " of " + std::to_string(sent) + " bytes came back";
}

bool LoopbackTest::Result::isRight() const {
    return problem.empty() &&
           std::all_of(rows.begin(), rows.end(), [](const Row& row) { return row.outcome == Outcome::right; });
}

bool LoopbackTest::Result::hasComeBack() const {
    return std::any_of(rows.begin(), rows.end(), [](const Row& row) { return row.received > 0; });
}

LoopbackTest::Result LoopbackTest::run(const std::string& port) {
    constexpr std::uint32_t kPlain = 10, kWithParity = 11;  // bits of a byte on the line
    Result result;
    port_.CommPort(port);
    if (!equalsNoCase(port_.CommPort(), port)) {  // it would be another one's bytes
        result.problem = port + " is no serial port";
        return result;
    }
    port_.Settings("9600,N,8,1");
    port_.PortOpen(true);
    if (!port_.PortOpen()) {
        result.problem = port + " could not be opened";
        result.isRefused = true;
        return result;
    }
    try {
        for (const auto rate : kRates) {
            for (const char parity : {'N', 'E', 'O'}) {
                result.rows.push_back(
                    tryOut(std::to_string(rate) + "," + parity + ",8,1", parity == 'N' ? kPlain : kWithParity));
                if (onRow) onRow(result.rows.back());
            }
        }
        tryLines(result);
    } catch (const PortError& error) {
        result.problem = port + " was lost: " + error.what();
    }
    if (port_.PortOpen()) port_.PortOpen(false);
    return result;
}

LoopbackTest::Row LoopbackTest::tryOut(const std::string& settings, std::uint32_t bitsOfAByte) {
    Row row{settings};
    if (!port_.SetCOMMSettings(port_.CommID(), settings)) {
        row.outcome = Outcome::notTaken;
        return row;
    }
    const auto rate = std::stoul(settings);
    const auto wireOfAByte = static_cast<std::int64_t>(bitsOfAByte * 1000000ULL / rate);
    const auto bytes = everyValue();
    row.sent = bytes.size();
    row.wire = static_cast<std::int64_t>(row.sent * bitsOfAByte * 1000000ULL / rate);
    port_.InBufferCount(0);
    const auto start = runtime_.micros();
    const auto back = exchanged(bytes, row.wire);
    row.took = runtime_.micros() - start;
    row.received = back.size();
    if (back.size() != bytes.size()) {
        row.outcome = Outcome::lost;
    } else if (back != bytes) {
        row.outcome = Outcome::changed;
    } else {
        row.delay = usualDelay(wireOfAByte);
    }
    return row;
}

/// What comes back until as much has come as was sent, or nothing more can be expected.
Bytes LoopbackTest::exchanged(const Bytes& bytes, std::int64_t wire) {
    Bytes back;
    port_.CommOutput(bytes);
    const auto start = runtime_.micros();
    while (back.size() < bytes.size() && runtime_.micros() - start < wire + kPatience) {
        runtime_.WaitActivity(1);
        runtime_.DoEvents();
        const auto more = bytesOf(port_.CommInput());
        back.insert(back.end(), more.begin(), more.end());
    }
    return back;
}

std::int64_t LoopbackTest::usualDelay(std::int64_t wireOfAByte) {
    std::vector<std::int64_t> delays;
    for (std::size_t i = 0; i < kLoneBytes; ++i) {
        const auto start = runtime_.micros();
        (void)exchanged({0x55}, wireOfAByte);
        delays.push_back(runtime_.micros() - start - wireOfAByte);
    }
    std::sort(delays.begin(), delays.end());
    return std::max<std::int64_t>(0, delays[delays.size() / 2]);
}

/// Modem lines and a break, where the plug has wires for them.
void LoopbackTest::tryLines(Result& result) {
    constexpr std::uint32_t kSettles = 30, kBreak = 50;  // ms
    const auto follows = [this](const std::function<void(bool)>& set, const std::function<bool()>& seen) {
        bool isFollowing = true;
        for (const bool isOn : {true, false, true}) {
            set(isOn);
            runtime_.Sleep(kSettles);
            runtime_.DoEvents();
            isFollowing = isFollowing && seen() == isOn;
        }
        return isFollowing;
    };
    result.rtsReachesCts = follows([this](bool isOn) { port_.RTSEnable(isOn); }, [this] { return port_.CTSHolding(); });
    result.dtrReachesDsr = follows([this](bool isOn) { port_.DTREnable(isOn); }, [this] { return port_.DSRHolding(); });
    port_.InBufferCount(0);
    port_.Break(true);
    runtime_.Sleep(kBreak);
    port_.Break(false);
    runtime_.Sleep(kSettles);
    runtime_.DoEvents();
    result.breakComesBack = port_.InBufferCount() > 0;
}

}  // namespace corvane
