#pragma once

#include <asm/termbits.h>
#include <fcntl.h>
#include <string>
#include <sys/ioctl.h>

#include "bench/Loop.h"
#include "bench/Pty.h"

namespace corvane::bench {

/// A program at the other end of a port, in the bench's own thread and loop.
class Host {
public:
    Host(Loop& loop, const std::string& path)
        : loop_(loop), port_(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), path.c_str()) {
        loop_.watch(port_.get(), [this] { take(); });
    }
    ~Host() { loop_.unwatch(port_.get()); }

    void setRate(std::uint32_t rate) {
        termios2 line = settings();
        line.c_cflag = (line.c_cflag & ~CBAUD) | BOTHER;
        line.c_ispeed = line.c_ospeed = rate;
        ioctl(port_.get(), TCSETS2, &line);
    }
    termios2 settings() const {
        termios2 line{};
        ioctl(port_.get(), TCGETS2, &line);
        return line;
    }

    /// Writes, then runs the loop until so many bytes have come, the port is gone, or the time is over.
    std::string ask(const std::string& bytes, std::size_t count, int limitMs = 10000) {
        got_.clear();
        wanted_ = count;
        if (!bytes.empty() && ::write(port_.get(), bytes.data(), bytes.size()) < 0) return "(not written)";
        loop_.run(loop_.now() + limitMs * 1000LL);
        return got_;
    }
    bool isGone() const { return gone_; }
    int descriptor() const { return port_.get(); }

private:
    void take() {
        char buffer[256];
        const auto count = ::read(port_.get(), buffer, sizeof buffer);
        if (count > 0) got_.append(buffer, static_cast<std::size_t>(count));
        gone_ = count == 0 || (count < 0 && errno == EIO);
        if (gone_) loop_.unwatch(port_.get());
        if (gone_ || got_.size() >= wanted_) loop_.stop();
    }

    Loop& loop_;
    Descriptor port_;
    std::string got_;
    std::size_t wanted_ = 0;
    bool gone_ = false;
};

}  // namespace corvane::bench
