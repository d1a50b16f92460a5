#include "platform/linux/serial/TermiosSerialControl.h"

#include <cerrno>
#include <cstring>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <system_error>
#include <unistd.h>

namespace corvane {
namespace {

constexpr int kMostReadsAtOnce = 16;

}  // namespace

OpenFailure TermiosSerialControl::openLine() {
    const auto path = map_.devicePath(CommPort());
    if (!path) return {OpenFailure::Kind::notThere, "", ENOENT};
    auto failure = line_.open(*path);
    if (failure.kind != OpenFailure::Kind::none) return failure;
    marks_.reset();
    watchesOutput_ = false;
    try {
        watch();
    } catch (const std::system_error& error) {
        line_.close();
        return {OpenFailure::Kind::other, *path, error.code().value()};
    }
    return failure;
}

void TermiosSerialControl::closeLine() {
    if (line_.descriptor() >= 0) io_.unwatch(line_.descriptor());
    line_.close();
    kept_.clear();
}

void TermiosSerialControl::watch() {
    io_.watch(line_.descriptor(), EPOLLIN | (watchesOutput_ ? EPOLLOUT : 0U),
              [this](std::uint32_t events) { onIo(events); });
}

/// Some drivers tell the rate that their divider reached (115385 for 115200). What was asked for goes out here, so that
/// it can be asked for again.
std::uint32_t TermiosSerialControl::readLine(CommState& state) {
    const auto error = line_.read(state);
    if (!error && hasTaken(state, setup_.state)) state.baudRate = setup_.state.baudRate;
    return error;
}

std::uint32_t TermiosSerialControl::writeLine(const CommState& state) {
    LineSetup wanted = setup_;
    wanted.state = state;
    wanted.handShaking = HandShaking();
    wanted.marksParityErrors = !ParityReplace().empty();
    const auto error = line_.configure(wanted);
    if (!error) setup_ = wanted;
    return error;
}

void TermiosSerialControl::applyHandShaking() { writeLine(setup_.state); }

void TermiosSerialControl::applyControlLines() { line_.setControlLines(RTSEnable(), DTREnable(), HandShaking() & 2); }

bool TermiosSerialControl::isHolding(LineInput input) {
    switch (input) {
        case LineInput::carrierDetect:
            return line_.isOn(TIOCM_CAR);
        case LineInput::clearToSend:
            return line_.isOn(TIOCM_CTS);
        case LineInput::dataSetReady:
            return line_.isOn(TIOCM_DSR);
    }
    return false;
}

void TermiosSerialControl::send(const Bytes& bytes) {
    kept_.insert(kept_.end(), bytes.begin(), bytes.end());
    if (!drain()) lineLost();
}

/// Gives the system what it takes; False when the line is gone.
bool TermiosSerialControl::drain() {
    const auto before = static_cast<std::int32_t>(kept_.size());
    while (!kept_.empty()) {
        const auto taken = ::write(line_.descriptor(), kept_.data(), kept_.size());
        if (taken > 0) {
            kept_.erase(kept_.begin(), kept_.begin() + taken);
        } else if (taken < 0 && errno == EINTR) {
            continue;
        } else if (taken < 0 && errno != EAGAIN) {
            return false;
        } else {
            break;
        }
    }
    sent(before, static_cast<std::int32_t>(kept_.size()));
    if (watchesOutput_ != !kept_.empty()) {
        watchesOutput_ = !kept_.empty();
        watch();
    }
    return true;
}

void TermiosSerialControl::discardUnsent() {
    kept_.clear();
    line_.discardOutput();
    drain();
}

void TermiosSerialControl::discardUnread() {
    marks_.reset();
    line_.discardInput();
}

void TermiosSerialControl::onIo(std::uint32_t events) {
    const bool gone = events & (EPOLLHUP | EPOLLERR);
    if (gone || !receive() || !drain()) lineLost();
}

/// False when the line is gone: a line that is there never reads as the end of a file.
bool TermiosSerialControl::receive() {
    for (int round = 0; round < kMostReadsAtOnce; ++round) {
        const auto count = ::read(line_.descriptor(), chunk_.data(), chunk_.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) break;
        if (count <= 0) return false;
        take(chunk_.data(), static_cast<std::size_t>(count));
        if (static_cast<std::size_t>(count) < chunk_.size()) break;
    }
    if (line_.newFramingErrors() > 0) raise(kFramingError);
    return true;
}

void TermiosSerialControl::take(const std::uint8_t* data, std::size_t size) {
    if (!setup_.marksParityErrors || !setup_.state.parity) return received(data, size);
    const auto replacement = static_cast<std::uint8_t>(ParityReplace().c_str()[0]);
    const auto bytes = marks_.removed(data, size, replacement);
    received(bytes.data(), bytes.size());
}

std::string TermiosSerialControl::FormatMessage(std::uint32_t code) const {
    const char* words = strerrordesc_np(static_cast<int>(code));
    return words ? words : "";
}

}  // namespace corvane
