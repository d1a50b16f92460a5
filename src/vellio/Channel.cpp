#include "vellio/Channel.h"

namespace corvane::vellio {

std::size_t Channel::write(const std::uint8_t* bytes, std::size_t count) {
    const std::size_t taken = out_.put(bytes, count);
    if (taken < count) raise(codes_.writeFull, count - taken);
    return taken;
}

bool Channel::writeMessage(const std::uint8_t* bytes, std::size_t count) {
    if (count == 0) return false;
    if (count > out_.room()) {
        raise(codes_.writeFull, count);
        return false;
    }
    out_.put(bytes, count);
    messages_.push_back(count);
    return true;
}

std::size_t Channel::read(std::uint8_t* to, std::size_t count) {
    const std::size_t taken = in_.peek(to, count);
    in_.drop(taken);
    return taken;
}

void Channel::discardWrite() {
    // The reader waits for the end of a message that has begun, or takes the next one for its end.
    const std::size_t kept = begun_ ? messages_.front() : 0;
    const std::size_t limit = out_.limit();
    out_.setLimit(kept);
    out_.setLimit(limit);
    messages_.resize(begun_ ? 1 : 0);
}

void Channel::clear() {
    in_.clear();
    out_.clear();
    messages_.clear();
    begun_ = false;
}

void Channel::readSize(std::size_t size) {
    if (const auto lost = in_.setLimit(size)) raise(codes_.readOverflow, lost);
}

void Channel::writeSize(std::size_t size) {
    if (const auto lost = out_.setLimit(size)) raise(codes_.writeFull, lost);
}

std::size_t Channel::nextCount() const {
    return std::min(messages_.empty() ? out_.size() : messages_.front(), kHidReportContent);
}

std::optional<HidReport> Channel::next() const {
    const std::size_t count = nextCount();
    if (count == 0) return std::nullopt;
    HidContent content{id_, !messages_.empty() && count < messages_.front(), Bytes(count)};
    out_.peek(content.bytes.data(), count);
    return hidReportOf(content);
}

void Channel::sent() {
    const std::size_t count = nextCount();
    out_.drop(count);
    if (!messages_.empty()) {
        messages_.front() -= count;
        begun_ = messages_.front() != 0;
        if (!begun_) messages_.pop_front();
    }
    if (out_.size() == 0) raise(codes_.writeEmpty, 0);
}

void Channel::received(const Bytes& bytes) {
    if (bytes.empty()) return;
    const std::size_t taken = in_.put(bytes.data(), bytes.size());
    if (taken) raise(codes_.received, in_.size());
    if (taken < bytes.size()) raise(codes_.readOverflow, bytes.size() - taken);
}

}  // namespace corvane::vellio
