#pragma once

#include <csignal>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace corvane::fakes {

/// A server on loopback in a process of its own: one of the scripts of tests/support, told by a JSON object what to be
/// (the script says how). Throws std::runtime_error when it does not start. The process ends with the object.
class SiteProcess {
public:
    SiteProcess(const std::string& script, const std::string& json) {
        const auto path = std::string(CORVANE_TEST_SUPPORT) + "/" + script;
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) < 0) throw std::runtime_error("no socket");
        stream_ = ends[0];
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(ends[1], STDIN_FILENO);
            ::dup2(ends[1], STDOUT_FILENO);
            ::execl("/usr/bin/python3", "python3", path.c_str(), json.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ends[1]);
        while (text_.find('\n') == std::string::npos && readEvents(kPatience)) continue;
        if (!text_.starts_with("port ")) {
            kill();
            throw std::runtime_error(script + " did not start");
        }
        address_ = "127.0.0.1:" + text_.substr(5, text_.find('\n') - 5);
    }
    ~SiteProcess() {
        kill();
        ::close(stream_);
    }
    SiteProcess(const SiteProcess&) = delete;
    SiteProcess& operator=(const SiteProcess&) = delete;

    /// "127.0.0.1:" and the port.
    const std::string& address() const { return address_; }

    /// Waits until so many events of that text have been recorded; False after ten seconds without.
    bool sees(const std::string& event, int times = 1) {
        while (count(event) < times) {
            if (!readEvents(kPatience)) return false;
        }
        return true;
    }

    /// How many have been recorded until now.
    int count(const std::string& event) {
        while (readEvents(0)) continue;
        int count = 0;
        const auto line = "\n" + event + "\n";
        for (auto at = text_.find(line); at != std::string::npos; at = text_.find(line, at + 1)) ++count;
        return count;
    }

    /// The server falls silent, though its machine still accepts connections; or answers again.
    void freeze() const {
        ::kill(process_, SIGSTOP);
        ::waitpid(process_, nullptr, WUNTRACED);
    }
    void thaw() const { ::kill(process_, SIGCONT); }

    /// The server is gone at once, as after a power loss.
    void kill() {
        if (process_ < 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(std::exchange(process_, -1), nullptr, 0);
    }

private:
    static constexpr int kPatience = 10000;  // ms without any event

    /// Takes in what has been written; False when nothing came in that time.
    bool readEvents(int waitMs) {
        pollfd entry{stream_, POLLIN, 0};
        char bytes[4096];
        const auto count = ::poll(&entry, 1, waitMs) > 0 ? ::recv(stream_, bytes, sizeof bytes, 0) : 0;
        if (count > 0) text_.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }

    int stream_ = -1;  // its standard input and output
    pid_t process_ = -1;
    std::string text_, address_;
};

}  // namespace corvane::fakes
