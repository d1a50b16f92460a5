#include "models/Voice.h"

#include <algorithm>

namespace corvane::models {
namespace {

constexpr Micros kMs = 1000;

}  // namespace

bool Voice::reply(Micros at, const Bytes& bytes) {
    const auto number = ++log_.replies;
    if (faults_.strike(FaultKind::cut, number)) return false;
    if (faults_.strike(FaultKind::drop, number)) return true;
    Bytes said = bytes;
    if (const auto* corrupt = faults_.strike(FaultKind::corrupt, number); corrupt && !said.empty()) {
        said[corrupt->amount < said.size() ? corrupt->amount : said.size() / 2] ^= 0x40;
    }
    if (const auto* delay = faults_.strike(FaultKind::delay, number)) at += delay->amount * kMs;
    if (const auto* noise = faults_.strike(FaultKind::noise, number)) {
        said.insert(said.begin(), noise->bytes.begin(), noise->bytes.end());
    }
    const int copies = faults_.strike(FaultKind::repeat, number) ? 2 : 1;
    const auto* pieces = faults_.strike(FaultKind::pieces, number);
    for (int copy = 0; copy < copies; ++copy) {
        sayInPieces(at, said, pieces ? pieces->amount : 1, pieces ? pieces->gap * kMs : 0);
    }
    return true;
}

void Voice::sayInPieces(Micros at, const Bytes& bytes, std::uint32_t pieces, Micros gap) {
    const std::size_t size = std::max<std::size_t>(1, (bytes.size() + pieces - 1) / pieces);
    for (std::size_t start = 0; start < bytes.size(); start += size, at += gap) {
        const auto end = std::min(bytes.size(), start + size);
        say(at, Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(start),
                      bytes.begin() + static_cast<std::ptrdiff_t>(end)));
    }
}

void Voice::say(Micros at, const Bytes& bytes) {
    if (bytes.empty()) return;
    queue_.push_back({queue_.empty() ? at : std::max(at, queue_.back().at), bytes});
}

std::optional<Micros> Voice::nextAt() const {
    if (queue_.empty()) return std::nullopt;
    return queue_.front().at;
}

Bytes Voice::take(Micros now) {
    Bytes said;
    for (; !queue_.empty() && queue_.front().at <= now; queue_.pop_front()) {
        said.insert(said.end(), queue_.front().bytes.begin(), queue_.front().bytes.end());
    }
    return said;
}

}  // namespace corvane::models
