#include "models/HidReader.h"

#include <algorithm>

namespace corvane::models {
namespace {

constexpr Micros kReportTime = 1000;
constexpr std::int64_t kLineBuffer = 256;  // bytes that wait for the line at most
constexpr std::uint32_t kFirstRate = 19200;
constexpr std::size_t kLargestFrame = 257;
constexpr std::size_t kRegisters = 65536;

constexpr std::uint8_t kAck = 6;
constexpr std::uint8_t kNak = 21;
constexpr std::uint8_t kWrongParameters = 1;
constexpr std::uint8_t kBusy = 3;
constexpr std::uint8_t kUnknownCommand = 4;

Bytes accepted(const Bytes& results = {}) {
    Bytes reply{kAck, static_cast<std::uint8_t>(results.size())};
    reply.insert(reply.end(), results.begin(), results.end());
    return reply;
}

Bytes refused(std::uint8_t reason) { return {kNak, 1, reason}; }

Micros byteTime(std::uint32_t rate) { return Micros{10000000} / std::max<Micros>(rate, 1); }

}  // namespace

HidReader::HidReader(Peer& line, HidReaderOptions options)
    : line_(line),
      options_(std::move(options)),
      baudRate_(kFirstRate),
      currentDirection_(options_.direction & 7),
      registers_(kRegisters) {}

void HidReader::restart() {
    forget();
    baudRate_ = kFirstRate;
    currentDirection_ = options_.direction & 7;
    break_ = false;
}

void HidReader::forget() {
    frame_.clear();
    replies_.clear();
    control_.clear();
    states_.clear();
    toHost_.clear();
    lineFreeAt_ = inFreeAt_ = outFreeAt_ = 0;
}

Micros HidReader::acceptsAt() const { return std::max(outFreeAt_, lineFreeAt_ - kLineBuffer * byteTime(baudRate_)); }

void HidReader::hear(Micros now, const HidReport& report) {
    advance(now);
    outFreeAt_ = now + kReportTime;
    const auto content = hidContentOf(report);
    if (!content || !isPlugged()) return;
    const Bytes& bytes = content->bytes;
    switch (content->id) {
        case HidReportId::data:
            lineFreeAt_ = std::max(lineFreeAt_, now) + static_cast<Micros>(bytes.size()) * byteTime(baudRate_);
            line_.hear(now, bytes, baudRate_);
            break;
        case HidReportId::control:
            if (frame_.size() < kLargestFrame) frame_.insert(frame_.end(), bytes.begin(), bytes.end());
            if (!content->more) answer(now, std::exchange(frame_, {}));
            break;
        case HidReportId::line:
            if (!bytes.empty()) break_ = (bytes[0] & 1) != 0;
            break;
        case HidReportId::feature:
            break;
    }
}

void HidReader::answer(Micros now, const Bytes& frame) {
    commands_.push_back(frame);
    const bool isWhole = frame.size() >= 2 && frame.size() == 2u + frame[1];
    Bytes reply = refused(kWrongParameters);
    if (isWhole) {
        if (options_.mutes.count(frame[0])) return;
        auto& left = options_.refusals[frame[0]];
        reply = left > 0 ? refused(kBusy) : replyTo(frame[0], Bytes(frame.begin() + 2, frame.end()), now);
        left = std::max(0, left - 1);
    }
    replies_.push_back({now + options_.replyDelay, reply});
}

Bytes HidReader::replyTo(std::uint8_t code, const Bytes& parameters, Micros now) {
    switch (code) {
        case 1:
            return setBaudRate(parameters, now);
        case 2:
            return parameters.size() == 3 ? accepted() : refused(kWrongParameters);
        case 3:
            if (parameters.size() != 1) return refused(kWrongParameters);
            currentDirection_ = parameters[0] & 7;
            return accepted();
        case 4: {
            Bytes version = bytesOf(options_.version);
            version.push_back(0);
            return accepted(version);
        }
        case 5:
            return accepted({options_.direction});
        case 9:
            return getRegister(parameters);
        case 10:
            return setRegister(parameters);
        case 11:
            return parameters.size() == 1 ? accepted() : refused(kWrongParameters);
        case 203:
            toHost_.clear();
            return accepted();
        default:
            return refused(kUnknownCommand);
    }
}

Bytes HidReader::setBaudRate(const Bytes& parameters, Micros now) {
    if (parameters.size() != 4) return refused(kWrongParameters);
    std::uint32_t rate = 0;
    for (const auto byte : parameters) rate = rate << 8 | byte;
    if (rate == 0) return refused(kWrongParameters);
    baudRate_ = rate;
    line_.hear(now, {}, rate);
    return accepted();
}

Bytes HidReader::getRegister(const Bytes& parameters) const {
    if (parameters.size() != 3) return refused(kWrongParameters);
    const std::size_t first = parameters[0] | parameters[1] << 8;
    const std::size_t end = std::min<std::size_t>(first + parameters[2], kRegisters);
    return accepted({registers_.begin() + static_cast<std::ptrdiff_t>(first),
                     registers_.begin() + static_cast<std::ptrdiff_t>(end)});
}

Bytes HidReader::setRegister(const Bytes& parameters) {
    if (parameters.size() < 3 || parameters.size() != 3u + parameters[2]) return refused(kWrongParameters);
    const std::size_t first = parameters[0] | parameters[1] << 8;
    if (first + parameters[2] > kRegisters) return refused(kWrongParameters);
    std::copy(parameters.begin() + 3, parameters.end(), registers_.begin() + static_cast<std::ptrdiff_t>(first));
    return accepted();
}

/// Takes in what the line and the commands have ready by now.
void HidReader::advance(Micros now) {
    if (!isPlugged()) return forget();
    const Bytes said = line_.speak(now);
    toHost_.insert(toHost_.end(), said.begin(), said.end());
    while (!replies_.empty() && replies_.front().at <= now) {
        for (const auto& report : hidReportsOf(HidReportId::control, replies_.front().bytes))
            control_.push_back(report);
        replies_.pop_front();
    }
}

std::optional<Micros> HidReader::nextAt() const {
    if (!isPlugged()) return std::nullopt;
    std::optional<Micros> next = line_.nextAt();
    if (!replies_.empty() && (!next || replies_.front().at < *next)) next = replies_.front().at;
    const bool ready = !control_.empty() || !states_.empty() || !toHost_.empty();
    if (ready && (!next || inFreeAt_ < *next)) next = inFreeAt_;
    return next;
}

std::optional<HidReport> HidReader::speak(Micros now) {
    advance(now);
    if (now < inFreeAt_ || !isPlugged()) return std::nullopt;
    std::optional<HidReport> report;
    if (!states_.empty()) {
        report = hidReportOf({HidReportId::line, false, {static_cast<std::uint8_t>(states_.front() ? 1 : 0)}});
        states_.pop_front();
    } else if (!control_.empty()) {
        report = control_.front();
        control_.pop_front();
    } else if (!toHost_.empty()) {
        const auto end = toHost_.begin() + static_cast<std::ptrdiff_t>(std::min(toHost_.size(), kHidReportContent));
        report = hidReportOf({HidReportId::data, false, Bytes(toHost_.begin(), end)});
        toHost_.erase(toHost_.begin(), end);
    }
    if (report) inFreeAt_ = now + kReportTime;
    return report;
}

}  // namespace corvane::models
