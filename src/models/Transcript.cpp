#include "models/Transcript.h"

#include <cstdio>
#include <map>

namespace corvane::models {

std::string textOf(const Passage& passage) {
    char head[64];
    std::snprintf(head, sizeof head, "%12.6f %c %u ", static_cast<double>(passage.at) / 1e6,
                  passage.direction == Direction::toDevice ? '>' : '<', passage.rate);
    std::string text = head;
    for (const auto byte : passage.bytes) {
        if (byte >= 0x20 && byte < 0x7F && byte != '\\') {
            text += static_cast<char>(byte);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            text += escaped;
        }
    }
    return text;
}

void Transcript::add(Passage passage) {
    if (passage.bytes.empty()) return;
    if (watcher_) watcher_(passage);
    if (!forgets_) passages_.push_back(std::move(passage));
}

void Transcript::watch(std::function<void(const Passage&)> watcher, bool forgets) {
    watcher_ = std::move(watcher);
    forgets_ = forgets;
}

std::size_t Transcript::bytes(Direction direction, Micros from, Micros to) const {
    std::size_t count = 0;
    for (const auto& passage : passages_) {
        if (passage.direction == direction && passage.at >= from && passage.at <= to) count += passage.bytes.size();
    }
    return count;
}

Micros Transcript::wireTime(Micros from, Micros to) const {
    std::map<std::uint32_t, std::size_t> bytesAt;
    for (const auto& passage : passages_) {
        if (passage.at >= from && passage.at <= to) bytesAt[passage.rate] += passage.bytes.size();
    }
    double seconds = 0;
    for (const auto& [rate, count] : bytesAt) seconds += static_cast<double>(count) * 10 / rate;
    return static_cast<Micros>(seconds * 1e6 + 0.5);
}

}  // namespace corvane::models
