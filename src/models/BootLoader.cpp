#include "models/BootLoader.h"

#include <utility>

namespace corvane::models {
namespace {

constexpr char kStx = 0x02;
constexpr char kCr = 0x0D;
constexpr std::uint8_t kAck = 0x06;
constexpr std::uint8_t kNak = 0x15;
constexpr std::size_t kLongestLine = 600;  // a record of 255 data bytes has 521 characters
constexpr Micros kMs = 1000;
constexpr Micros kBannerAfter = 100 * kMs;
constexpr Micros kBetweenDots = 300 * kMs;

}  // namespace

void BootLoader::start(Micros now) {
    abandon();
    writer_.restart();
    deafUntil_ = now;
    if (const auto* deaf = board_.faults.strike(FaultKind::bootDeaf)) deafUntil_ += deaf->amount * kMs;
    if (const auto* banner = board_.faults.strike(FaultKind::banner))
        board_.voice.say(now + kBannerAfter, banner->bytes);
}

Next BootLoader::hear(Micros now, std::uint8_t byte) {
    if (now < deafUntil_) return Next::goOn;
    const char c = static_cast<char>(byte);
    if (c == kStx || (c == ':' && line_.empty())) {
        line_ = c;
    } else if (c == kCr) {
        const std::string line = std::exchange(line_, {});
        if (line.empty()) {
            prompt(now);
        } else if (line.front() == ':') {
            takeRecord(now, line);
        } else {
            return obey(now, line.substr(1));
        }
    } else if (!line_.empty() && line_.size() < kLongestLine) {
        line_ += c;
    }
    return Next::goOn;
}

Next BootLoader::obey(Micros now, const std::string& command) {
    if (command == "X") {
        erase(now);
    } else if (command == "R") {
        return restart();
    } else {
        board_.reply(now, {kNak});
    }
    return Next::goOn;
}

void BootLoader::prompt(Micros now) {
    ++board_.log.prompts;
    const Bytes text = bytesOf("\r\n" + board_.options.prompt);
    const auto* slowly = board_.faults.strike(FaultKind::promptPieces);
    if (!slowly) return board_.reply(now, text);
    board_.reply(now, {text.front()});
    for (std::size_t i = 1; i < text.size(); ++i) {
        board_.voice.say(now + static_cast<Micros>(i) * slowly->amount * kMs, {text[i]});
    }
}

void BootLoader::erase(Micros now) {
    ++board_.log.erases;
    auto& faults = board_.faults;
    if (faults.strike(FaultKind::unplugErase)) {
        board_.isPlugged = false;
        return;
    }
    if (const auto* slow = faults.strike(FaultKind::eraseSlow)) now += slow->amount * kMs;
    if (faults.strike(FaultKind::eraseNak)) return board_.reply(now, {kNak});
    board_.flash.erase();
    writer_.restart();
    numbers_.clear();
    isComplete_ = false;
    if (!faults.strike(FaultKind::eraseMute)) board_.reply(now, {kAck});
}

Next BootLoader::restart() {
    ++board_.log.restarts;
    writer_.restart();
    if (!isComplete_ && board_.flash.contents().empty()) return Next::goOn;
    if (!isComplete_ || !numbers_.empty()) complete();
    return Next::startApplication;
}

/// Whatever starts the device next, it is the new application that runs.
void BootLoader::complete() {
    isComplete_ = true;
    if (!board_.options.nextVersion.empty()) board_.version = board_.options.nextVersion;
}

/// A record keeps its number when it comes again, so that "the fifth" is the same one in every try.
std::uint32_t BootLoader::numberOf(const std::string& text) {
    return numbers_.try_emplace(text, static_cast<std::uint32_t>(numbers_.size() + 1)).first->second;
}

void BootLoader::takeRecord(Micros now, const std::string& text) {
    board_.log.records.push_back(text);
    const auto number = numberOf(text);
    auto& faults = board_.faults;
    if (faults.strike(FaultKind::unplug, number, text)) {
        board_.isPlugged = false;
        return;
    }
    if (faults.strike(FaultKind::nak, number, text)) return board_.reply(now, {kNak});
    const auto taken = writer_.take(text);
    if (taken == RecordWriter::Taken::refused) {
        board_.log.refused.push_back(text);
        return board_.reply(now, {kNak});
    }
    if (taken == RecordWriter::Taken::ended) complete();
    if (faults.strike(FaultKind::mute, number, text)) return;
    if (const auto* dots = faults.strike(FaultKind::dots, number, text)) {
        for (std::uint32_t i = 0; i < dots->amount; ++i, now += kBetweenDots) board_.voice.say(now, {'.'});
    }
    board_.reply(now, {kAck});
}

}  // namespace corvane::models
