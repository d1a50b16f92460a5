#include "models/Transcript.h"

#include <cstdio>

namespace corvane::models {
namespace {

constexpr Micros kLongestBreak = 2000;
constexpr std::size_t kLongestPassage = 4096;

}  // namespace

std::string textOf(const Passage& passage) {
    char head[64];
    std::snprintf(head, sizeof head, "%12.6f %c %u ", static_cast<double>(passage.from) / 1e6,
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

void Transcript::add(Micros at, Direction direction, std::uint32_t rate, const Bytes& bytes) {
    if (bytes.empty()) return;
    if (!passages_.empty()) {
        auto& last = passages_.back();
        if (last.direction == direction && last.rate == rate && at - last.to <= kLongestBreak &&
            last.bytes.size() < kLongestPassage) {
            last.to = at;
            last.bytes.insert(last.bytes.end(), bytes.begin(), bytes.end());
            return;
        }
        if (taker_) finish();
    }
    passages_.push_back({at, at, direction, rate, bytes});
}

void Transcript::finish() {
    if (!taker_) return;
    for (const auto& passage : passages_) taker_(passage);
    passages_.clear();
}

}  // namespace corvane::models
