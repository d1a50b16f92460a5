#include "support/SiteProcess.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace corvane::fakes {
namespace {

constexpr int kPatience = 10000;  // ms without any event

}  // namespace

SiteProcess::SiteProcess(const std::string& script, const std::string& json) {
    std::array<int, 2> toChild{}, fromChild{};
    if (::pipe2(toChild.data(), O_CLOEXEC) < 0 || ::pipe2(fromChild.data(), O_CLOEXEC) < 0) {
        throw std::runtime_error("no pipes");
    }
    input_ = toChild[1];
    output_ = fromChild[0];
    auto path = std::string(CORVANE_TEST_SUPPORT) + "/" + script, argument = json;
    char interpreter[] = "/usr/bin/python3";
    char* arguments[] = {interpreter, path.data(), argument.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toChild[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fromChild[1], STDOUT_FILENO);
    const int error = ::posix_spawn(&process_, interpreter, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(toChild[0]);
    ::close(fromChild[1]);
    if (error) process_ = -1;
    while (!error && events_.empty() && readEvents(kPatience)) continue;
    if (events_.empty() || events_.front().compare(0, 5, "port ") != 0) {
        kill();
        throw std::runtime_error(script + " did not start");
    }
    address_ = "127.0.0.1:" + events_.front().substr(5);
}

SiteProcess::~SiteProcess() {
    kill();
    ::close(input_);
    ::close(output_);
}

void SiteProcess::kill() {
    if (process_ < 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(std::exchange(process_, -1), nullptr, 0);
}

void SiteProcess::freeze() {
    ::kill(process_, SIGSTOP);
    int status = 0;
    ::waitpid(process_, &status, WUNTRACED);
}

void SiteProcess::thaw() { ::kill(process_, SIGCONT); }

int SiteProcess::recorded(const std::string& event) const {
    return static_cast<int>(std::count(events_.begin(), events_.end(), event));
}

bool SiteProcess::sees(const std::string& event, int times) {
    while (recorded(event) < times) {
        if (!readEvents(kPatience)) return false;
    }
    return true;
}

int SiteProcess::count(const std::string& event) {
    while (readEvents(0)) continue;
    return recorded(event);
}

/// Takes in what has been written; False when nothing came in that time.
bool SiteProcess::readEvents(int waitMs) {
    pollfd entry{output_, POLLIN, 0};
    if (::poll(&entry, 1, waitMs) <= 0) return false;
    std::array<char, 4096> bytes{};
    const auto count = ::read(output_, bytes.data(), bytes.size());
    if (count <= 0) return false;
    rest_.append(bytes.data(), static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = rest_.find('\n')) != std::string::npos;) {
        events_.push_back(rest_.substr(0, end));
        rest_.erase(0, end + 1);
    }
    return true;
}

}  // namespace corvane::fakes
