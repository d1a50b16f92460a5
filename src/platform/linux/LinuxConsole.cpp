#include "platform/linux/LinuxConsole.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <sys/epoll.h>
#include <termios.h>
#include <unistd.h>

namespace corvane {
namespace {

constexpr std::size_t kPiece = 512;  // what a pipe or a terminal that is ready takes without waiting

/// Switches a terminal's echo off for as long as it lives.
class NoEcho {
public:
    explicit NoEcho(bool wanted) : changed_(wanted && tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (!changed_) return;
        termios quiet = before_;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        quiet.c_lflag |= ECHONL;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    ~NoEcho() {
        if (changed_) tcsetattr(STDIN_FILENO, TCSANOW, &before_);
    }
    NoEcho(const NoEcho&) = delete;
    NoEcho& operator=(const NoEcho&) = delete;

private:
    termios before_{};
    bool changed_;
};

/// Watches standard input for as long as it lives and collects what comes.
class InputWatch {
public:
    InputWatch(LinuxRuntime& runtime, std::string& typed) : runtime_(runtime), typed_(typed) {
        runtime_.watch(STDIN_FILENO, EPOLLIN, [this](std::uint32_t) { take(); });
        watching_ = true;
    }
    ~InputWatch() { stop(); }
    InputWatch(const InputWatch&) = delete;
    InputWatch& operator=(const InputWatch&) = delete;

    bool isEnded() const { return !watching_; }

private:
    void take() {
        char buffer[256];
        const auto count = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (count > 0) {
            typed_.append(buffer, static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            stop();
        }
    }
    void stop() {
        if (watching_) runtime_.unwatch(STDIN_FILENO);
        watching_ = false;
    }

    LinuxRuntime& runtime_;
    std::string& typed_;
    bool watching_ = false;
};

}  // namespace

StandardStream StandardStream::output() { return StandardStream(STDOUT_FILENO); }
StandardStream StandardStream::error() { return StandardStream(STDERR_FILENO); }

StandardStream::StandardStream(int descriptor) : descriptor_(descriptor), isTerminal_(isatty(descriptor) == 1) {}

void StandardStream::write(std::string_view utf8) {
    if (!isBroken_) pending_ += utf8;
    flush();
}

void StandardStream::drain(int waitMs) {
    std::size_t done = 0;
    while (done < pending_.size()) {
        pollfd ready{descriptor_, POLLOUT, 0};
        const int count = poll(&ready, 1, waitMs);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        const auto written = ::write(descriptor_, pending_.data() + done, std::min(kPiece, pending_.size() - done));
        if (written > 0) {
            done += static_cast<std::size_t>(written);
        } else if (errno != EINTR && errno != EAGAIN) {
            isBroken_ = true;  // nobody reads any more, or there is no room; the run goes on all the same
            error_ = errno;
            done = pending_.size();
        }
    }
    pending_.erase(0, done);
}

std::string StandardStream::failure() const {
    const bool isGone = error_ == EPIPE || error_ == EIO || error_ == EBADF;  // the pipe's end, the terminal, ...
    return isBroken_ && !isGone ? std::strerror(error_) : "";
}

bool LinuxTerminal::isThere() const { return isatty(STDIN_FILENO) == 1; }

std::optional<std::string> LinuxTerminal::readLine(bool echo, const std::function<bool()>& isAbandoned) {
    const NoEcho noEcho(!echo);
    const InputWatch watch(runtime_, typed_);
    for (;;) {
        const auto end = typed_.find('\n');
        if (end != std::string::npos) {
            auto line = typed_.substr(0, end);
            typed_.erase(0, end + 1);
            return line;
        }
        if (watch.isEnded() || isAbandoned()) return std::nullopt;
        runtime_.WaitActivity(10);
        runtime_.DoEvents();
    }
}

}  // namespace corvane
