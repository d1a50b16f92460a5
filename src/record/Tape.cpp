#include "record/Tape.h"

#include <algorithm>

#include "text/Text.h"

namespace corvane {
namespace {

constexpr std::size_t kWindow = 3;  // bytes; a shorter piece of a secret tells little, and occurs everywhere
constexpr std::size_t kMostHeld = 4096;
constexpr char kBlank[] = "***";

bool isFromLine(const RecordedEvent& event) { return event.what == "got" || event.what == "dropped"; }

}  // namespace

void Tape::begin() {
    recording_.clear();
    held_.clear();
    start_ = runtime_.micros();
    isOn_ = true;
    isVeiled_ = false;
}

void Tape::end() {
    flush();
    isOn_ = false;
    onLine = nullptr;
}

void Tape::note(const std::string& what, const std::string& where, std::string text) {
    if (isOn_) add({now(), what, where, withoutSecrets(std::move(text))});
}

void Tape::sent(const std::string& where, const Bytes& bytes) {
    if (!isOn_) return;
    flush();
    auto text = textOf(bytes);
    if (isVeiled_ || holdsSecret(text)) {
        add({now(), "sent-secret", where});
    } else {
        add({now(), "sent", where, std::move(text)});
    }
}

void Tape::came(const std::string& what, const std::string& where, const Bytes& bytes, std::int64_t at) {
    if (isOn_ && !bytes.empty()) add({at, what, where, textOf(bytes)});
}

void Tape::crossed(const std::string& what, const std::string& where, const Bytes& bytes) {
    if (what == "sent") return sent(where, bytes);
    if (what == "got") return came(what, where, bytes, now());
    note(what, where.empty() ? "-" : where, textOf(bytes));
}

void Tape::keepSecret(const std::string& secret) {
    if (secret.size() >= kWindow && std::find(secrets_.begin(), secrets_.end(), secret) == secrets_.end())
        secrets_.push_back(secret);
}

void Tape::veil(const Bytes& secret) {
    isVeiled_ = !secret.empty();
    keepSecret(textOf(secret));
}

/// With a secret about, what comes is held until the next sending: an echo may come byte by byte.
void Tape::add(RecordedEvent event) {
    if (secrets_.empty() && held_.empty()) return write(event);
    held_.push_back(std::move(event));
    if (held_.size() > kMostHeld) flush();
}

void Tape::flush() {
    std::string all;
    for (const auto& event : held_) {
        if (isFromLine(event)) all += event.bytes;
    }
    const bool isBlanked = holdsSecret(all);
    for (auto& event : held_) {
        if (isBlanked && isFromLine(event)) event = {event.at, event.what + "-secret", event.where};
        write(event);
    }
    held_.clear();
}

void Tape::write(const RecordedEvent& event) {
    const auto line = recording_.add(event);
    if (onLine) onLine(event, line);
}

bool Tape::holdsSecret(const std::string& bytes) const {
    return std::any_of(secrets_.begin(), secrets_.end(), [&bytes](const std::string& secret) {
        for (std::size_t i = 0; i + kWindow <= secret.size(); ++i) {
            if (bytes.find(secret.substr(i, kWindow)) != std::string::npos) return true;
        }
        return false;
    });
}

std::string Tape::withoutSecrets(std::string text) const {
    for (const auto& secret : secrets_) text = replaceAll(std::move(text), secret, kBlank);
    return text;
}

}  // namespace corvane
