#include "faults/explore/Wire.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace corvane::faults {
namespace {

constexpr Micros kMs = 1000;
constexpr Micros kEraseTakes = 300 * kMs, kRecordTakes = 3 * kMs;
constexpr Micros kBootStarts = 100 * kMs, kApplicationStarts = 300 * kMs;
constexpr std::uint8_t kFlip = 0x40;  // makes no digit of a digit, and neither ACK nor NAK of the other
const Bytes kErase = {0x02, 'X', '\r'}, kPrompt = {'\r', '\n', 'A', 'V', 'R', '>'};
constexpr const char* kNames[] = {"lose",    "damage", "head",  "late",        "twice",
                                  "restart", "banner", "after", "bannerafter", "slow"};

models::DeviceOptions options() {
    models::DeviceOptions options;
    options.version = "TARN-R200 V5.1R23";
    options.nextVersion = "TARN-R200 V5.2R1";
    return options;
}

bool isRestart(What what) { return what == What::restart || what == What::banner; }

}  // namespace

std::string Event::text() const {
    const auto name = side + std::to_string(number) + ":" + kNames[static_cast<int>(what)];
    return ms || what == What::twice ? name + std::to_string(ms) : name;
}

std::optional<Event> Event::from(const std::string& text) {
    Event event;
    char name[16] = {};
    if (std::sscanf(text.c_str(), "%c%d:%15[a-z]%d", &event.side, &event.number, name, &event.ms) < 3) return {};
    for (int i = 0; i < static_cast<int>(std::size(kNames)); ++i) {
        event.what = static_cast<What>(i);
        if (std::strcmp(kNames[i], name) == 0) return event;
    }
    return {};
}

Wire::Wire(Plan plan) : plan_(std::move(plan)), device_(options()) {}

/// What a sending is. Data beyond the first segment has a name of its own: what happens there does other harm.
const char* Wire::contentOf(const Bytes& bytes) {
    const auto text = textOf(bytes);
    if (text == "\x02R\r") return "restart";
    if (text == "\r") return "CR";
    if (text.front() != ':' || text.size() < 13) {
        isBeyond_ = isBeyond_ && bytes != kErase;
        return bytes == kErase ? "erase" : text.front() == ':' ? "end" : "query";
    }
    if (text[8] == '4') {
        isBeyond_ = text.compare(9, 4, "0000") != 0;
        return "upper";
    }
    return isBeyond_ ? "data beyond" : text.compare(3, 4, "0000") == 0 ? "first" : "data";
}

Micros Wire::wireTime(std::size_t bytes) const { return static_cast<Micros>(bytes) * 10 * 1000000 / rate_; }

int Wire::unsent(Micros now) const {
    const auto byte = wireTime(1);
    return static_cast<int>((std::max(portFreeAt_, now) - now + byte - 1) / byte);
}

/// Counts a step; what is planned for it.
std::optional<Event> Wire::strike(char side, const char* content, Micros now) {
    if (!counts_) return {};
    const Step step{side, ++numbers_[side == 'a'], content, now};
    steps_.push_back(step);
    auto event = plan_(step);
    if (event) struck_.push_back(*event);
    return event;
}

void Wire::hear(Micros now, const Bytes& bytes, std::uint32_t rate) {
    rate_ = rate;
    advance(now);
    if (bytes.empty()) return;
    portFreeAt_ = std::max(now, portFreeAt_) + wireTime(bytes.size());
    counts_ = counts_ || bytes == kErase;
    if (counts_) conversation_ += '>' + textOf(bytes);
    Message message{portFreeAt_, bytes, contentOf(bytes), {}};
    message.event = strike('s', message.content, now);
    const auto what = message.event ? message.event->what : What::slow;
    const Micros ms = message.event ? message.event->ms * kMs : 0;
    if (what == What::lose) return;
    if (what == What::damage) message.bytes[bytes.size() / 2] ^= kFlip;
    if (what == What::head) message.bytes.front() ^= kFlip;
    message.at = lastArrival_ = std::max(portFreeAt_ + (what == What::late ? ms : 0), lastArrival_);
    put(toDevice_, message);
    if (what != What::twice) return;
    message.at += ms ? ms : wireTime(bytes.size());
    if (!ms) lastArrival_ = message.at;
    put(toDevice_, message);
}

/// In the order of time, behind what comes at the same moment.
void Wire::put(std::deque<Message>& way, Message message) {
    const auto later = [](Micros at, const Message& other) { return at < other.at; };
    way.insert(std::upper_bound(way.begin(), way.end(), message.at, later), std::move(message));
}

std::optional<Micros> Wire::nextAt() const {
    std::optional<Micros> next;
    if (!toDevice_.empty()) next = std::max(toDevice_.front().at, busyUntil_);
    if (!toHost_.empty() && (!next || toHost_.front().at < *next)) next = toHost_.front().at;
    return next;
}

/// Lets the device hear what has come in by now.
void Wire::advance(Micros now) {
    while (!toDevice_.empty() && std::max(toDevice_.front().at, busyUntil_) <= now) {
        const auto message = std::move(toDevice_.front());
        toDevice_.pop_front();
        takeIn(message, std::max(message.at, busyUntil_));
    }
}

Bytes Wire::speak(Micros now) {
    advance(now);
    Bytes said;
    for (; !toHost_.empty() && toHost_.front().at <= now; toHost_.pop_front()) {
        if (counts_) conversation_ += '<' + textOf(toHost_.front().bytes);
        said.insert(said.end(), toHost_.front().bytes.begin(), toHost_.front().bytes.end());
    }
    return said;
}

void Wire::takeIn(const Message& message, Micros now) {
    if (message.event && isRestart(message.event->what)) return restart(now, message.event->what == What::banner);
    auto heard = message.bytes;
    if (message.at < deafUntil_) return;
    if (message.at - wireTime(heard.size()) < deafUntil_) heard = {heard.back()};
    const bool wasInBoot = device_.isInBoot();
    const bool isSlow = message.event && message.event->what == What::slow;
    const Micros takes = heard != kErase ? kRecordTakes : isSlow ? message.event->ms * kMs : kEraseTakes;
    device_.hear(now, heard, rate_);
    if (wasInBoot && !device_.isInBoot()) deafUntil_ = now + kApplicationStarts;
    busyUntil_ = now + takes;
    auto said = device_.speak(now);
    if (!said.empty()) answer(busyUntil_, std::move(said), message.content);
}

void Wire::answer(Micros now, Bytes bytes, const char* content) {
    const auto event = strike('a', content, now);
    const auto what = event ? event->what : What::slow;
    const Micros ms = event ? event->ms * kMs : 0;
    if (isRestart(what)) return restart(now, what == What::banner);
    if (what == What::damage) bytes[bytes.size() / 2] ^= kFlip;
    const auto span = wireTime(bytes.size());
    if (what != What::lose) {
        lastAnswer_ = std::max(now + span + (what == What::late ? ms : 0), lastAnswer_);
        put(toHost_, {lastAnswer_, bytes, content, {}});
    }
    if (what == What::twice) put(toHost_, {lastAnswer_ + (ms ? ms : span), bytes, content, {}});
    if (what == What::after || what == What::bannerAfter) restart(now, what == What::bannerAfter);
}

/// The power was away for a moment.
void Wire::restart(Micros now, bool hasBanner) {
    device_.unplug();
    device_.plugIn(now);
    busyUntil_ = now;
    deafUntil_ = now + (device_.isInBoot() ? kBootStarts : kApplicationStarts);
    if (hasBanner && device_.isInBoot()) put(toHost_, {deafUntil_, kPrompt, "", {}});
}

}  // namespace corvane::faults
