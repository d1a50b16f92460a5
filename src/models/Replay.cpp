#include "models/Replay.h"

#include <algorithm>
#include <cstdlib>

namespace corvane::models {
namespace {

constexpr std::int16_t kSecret = -1;
constexpr std::size_t kShown = 24;  // bytes of each side, for people

std::string textOf(const std::vector<std::int16_t>& bytes, std::size_t from) {
    std::string text;
    for (auto i = from; i < std::min(bytes.size(), from + kShown) && bytes[i] != kSecret; ++i)
        text += static_cast<char>(bytes[i]);
    return text;
}

}  // namespace

Replay::Replay(const std::vector<RecordedEvent>& events, const std::string& port, Timing timing) : timing_(timing) {
    Micros sentAt = 0;
    std::size_t anchor = 0;
    const auto add = [&](Step::Kind kind, Micros at, std::string_view what = {}) {
        steps_.push_back(
            {kind, at, std::max<Micros>(at - sentAt, 0), anchor, expected_.size(), Bytes(what.begin(), what.end())});
    };
    std::size_t said = 0;  // of the bytes that are taken next
    std::vector<std::pair<Micros, std::size_t>> sightings;
    for (const auto& event : events) {
        if (event.where != port) continue;
        if (event.what == "sent" || event.what == "sent-secret") {
            anchor = expected_.size();
            sentAt = event.at;
            if (event.what == "sent-secret") expected_.push_back(kSecret);
            for (const char c : event.bytes) expected_.push_back(static_cast<std::uint8_t>(c));
        } else if (event.what == "seen") {
            const auto blank = std::min(event.bytes.find(' '), event.bytes.size());
            sightings.emplace_back(std::clamp<Micros>(std::strtoll(event.bytes.c_str(), nullptr, 10), 0, event.at),
                                   std::strtoul(event.bytes.c_str() + blank, nullptr, 10));
        } else if (event.what == "got" || event.what == "dropped") {
            said = 0;
            for (const auto& [at, count] : sightings) {
                if (count <= said || count > event.bytes.size()) continue;
                add(Step::Kind::says, at, std::string_view(event.bytes).substr(said, count - said));
                said = count;
            }
            sightings.clear();
            if (said < event.bytes.size()) add(Step::Kind::says, event.at, std::string_view(event.bytes).substr(said));
        } else if (event.isLoss()) {
            add(Step::Kind::vanishes, event.at);
        } else if (event.isReturn()) {
            add(Step::Kind::returns, event.at);
        }
    }
    heardAt_.reserve(expected_.size());
    std::stable_sort(steps_.begin(), steps_.end(), [](const Step& a, const Step& b) { return a.at < b.at; });
}

/// A frame of any content: its fourth byte says how many follow that and precede the CRC. True when the byte is one of
/// it; a frame that is complete is done with.
bool Replay::takesSecret(std::uint8_t byte) {
    if (expected_[heard_] != kSecret) return false;
    secret_.push_back(byte);
    if (secret_.size() < 4 || secret_.size() < secret_[3] + 6U) return true;
    secret_.clear();
    ++heard_;
    return true;
}

void Replay::depart(std::uint8_t byte) {
    Departure departure;
    departure.at = heard_;
    departure.before = std::string(latest_.begin(), latest_.end());
    departure.then = textOf(expected_, heard_);
    departure.now = std::string(1, static_cast<char>(byte));
    departure_ = departure;
}

void Replay::hear(Micros now, const Bytes& bytes, std::uint32_t /*hostRate*/) {
    for (const auto byte : bytes) {
        if (departure_) {
            if (departure_->now.size() < kShown) departure_->now += static_cast<char>(byte);
            continue;
        }
        heardAt_.resize(std::max(heardAt_.size(), heard_ + 1), now);
        if (heard_ < expected_.size() && takesSecret(byte)) continue;
        if (heard_ >= expected_.size() || expected_[heard_] != byte) {
            depart(byte);
            continue;
        }
        ++heard_;
        latest_.push_back(byte);
        if (latest_.size() > kShown) latest_.erase(latest_.begin());
    }
}

std::optional<Micros> Replay::dueAt(const Step& step) const {
    if (timing_ == Timing::absolute) return step.at;
    if (timing_ == Timing::fast) {
        if (heard_ < step.sent) return std::nullopt;
        return heardAt_.empty() ? 0 : heardAt_.back();
    }
    if (step.sent == 0) return 0;
    return step.anchor < heardAt_.size() ? std::optional(heardAt_[step.anchor] + step.delay) : std::nullopt;
}

std::optional<Micros> Replay::nextAt() const {
    if (next_ >= steps_.size() || departure_) return std::nullopt;
    return dueAt(steps_[next_]);
}

Bytes Replay::speak(Micros now) {
    Bytes said;
    for (; next_ < steps_.size() && !departure_; ++next_) {
        const auto& step = steps_[next_];
        const auto due = dueAt(step);
        if (!due || *due > now) break;
        if (step.kind != Step::Kind::says) isPlugged_ = step.kind == Step::Kind::returns;
        said.insert(said.end(), step.bytes.begin(), step.bytes.end());
    }
    return said;
}

void ReplayThen::hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) {
    replay_.hear(now, bytes, hostRate);
    if (!device_) return;
    device_->hear(now, bytes, hostRate);
    if (!goesOn()) device_->speak(now);  // the recorded one has said it
}

std::optional<Micros> ReplayThen::nextAt() const {
    const auto next = replay_.nextAt(), then = device_ ? device_->nextAt() : std::nullopt;
    return next && then ? std::min(next, then) : next ? next : then;
}

Bytes ReplayThen::speak(Micros now) {
    const auto then = device_ ? device_->speak(now) : Bytes();
    return goesOn() ? then : replay_.speak(now);
}

}  // namespace corvane::models
