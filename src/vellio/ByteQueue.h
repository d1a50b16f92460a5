#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>

namespace corvane::vellio {

/// Bytes in order, never more than the limit.
class ByteQueue {
public:
    explicit ByteQueue(std::size_t limit) : limit_(limit) {}

    std::size_t size() const { return bytes_.size(); }
    std::size_t room() const { return limit_ - bytes_.size(); }
    std::size_t limit() const { return limit_; }

    /// The number of bytes taken: all, or as many as there is room for.
    std::size_t put(const std::uint8_t* bytes, std::size_t count) {
        count = std::min(count, room());
        bytes_.insert(bytes_.end(), bytes, bytes + count);
        return count;
    }

    std::size_t peek(std::uint8_t* to, std::size_t count) const {
        count = std::min(count, bytes_.size());
        std::copy_n(bytes_.begin(), count, to);
        return count;
    }

    void drop(std::size_t count) {
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(std::min(count, bytes_.size())));
    }

    void clear() { bytes_.clear(); }

    /// The number of bytes at the end that had to go.
    std::size_t setLimit(std::size_t limit) {
        limit_ = limit;
        const std::size_t lost = bytes_.size() > limit ? bytes_.size() - limit : 0;
        bytes_.resize(bytes_.size() - lost);
        return lost;
    }

private:
    std::size_t limit_;
    std::deque<std::uint8_t> bytes_;
};

}  // namespace corvane::vellio
