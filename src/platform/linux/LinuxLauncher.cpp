#include "platform/linux/LinuxLauncher.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/ProgramFile.h"

namespace corvane {
namespace {

std::string reason(const std::string& what, int error) { return what + ": " + std::strerror(error); }

/// This program's own environment with some variables set anew.
std::vector<std::string> environmentWith(const std::vector<Launcher::Variable>& variables) {
    std::vector<std::string> texts;
    for (const auto& [name, value] : variables) texts.push_back(name + "=" + value);
    for (char** own = environ; *own; ++own) {
        const std::string text = *own;
        const bool isReplaced = std::any_of(variables.begin(), variables.end(), [&text](const auto& variable) {
            return text.compare(0, variable.name.size() + 1, variable.name + "=") == 0;
        });
        if (!isReplaced) texts.push_back(text);
    }
    return texts;
}

/// Signals as a fresh program expects them, a session of its own, nothing on standard input.
class Detached {
public:
    Detached() {
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    }
    ~Detached() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
    }
    Detached(const Detached&) = delete;
    Detached& operator=(const Detached&) = delete;

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t actions{};
};

}  // namespace

LinuxLauncher::~LinuxLauncher() {
    for (const int ended : running_) {
        runtime_.unwatch(ended);
        ::close(ended);
    }
}

std::string LinuxLauncher::fault(const std::string& path) { return programFault(path); }

std::string LinuxLauncher::start(const std::string& path, const std::vector<Variable>& variables) {
    struct stat file {};
    if (stat(path.c_str(), &file) < 0) return reason(path, errno);
    const bool executable = file.st_mode & S_IXUSR;
    if (!executable && chmod(path.c_str(), (file.st_mode & 07777) | S_IXUSR) < 0) return reason(path, errno);
    return spawn(path.find('/') == std::string::npos ? "./" + path : path, nullptr, variables);
}

std::string LinuxLauncher::open(const std::string& address) {
    if (address.empty() || address.front() == '-') return "\"" + address + "\" is no address";
    return spawn("xdg-open", &address, {});
}

std::string LinuxLauncher::spawn(const std::string& program, const std::string* argument,
                                 const std::vector<Variable>& variables) {
    const Detached how;
    std::string name = program;
    std::string first = argument ? *argument : std::string();
    char* arguments[] = {name.data(), argument ? first.data() : nullptr, nullptr};
    auto texts = environmentWith(variables);
    std::vector<char*> environment;
    for (auto& text : texts) environment.push_back(text.data());
    environment.push_back(nullptr);
    pid_t process = 0;
    const int error =
        posix_spawnp(&process, name.c_str(), &how.actions, &how.attributes, arguments, environment.data());
    if (error) return reason(program, error);
    awaitEnd(process);
    return {};
}

/// Takes the ended process off the system's list, where it would stay as a zombie. How it ended does not matter.
void LinuxLauncher::awaitEnd(int process) {
    const int ended = static_cast<int>(syscall(SYS_pidfd_open, process, 0));  // glibc 2.36 declares its own for C only
    if (ended < 0) return;
    running_.insert(ended);
    runtime_.watch(ended, EPOLLIN, [this, ended](std::uint32_t) {
        siginfo_t information{};
        waitid(P_PIDFD, static_cast<id_t>(ended), &information, WEXITED | WNOHANG);
        runtime_.unwatch(ended);
        running_.erase(ended);
        ::close(ended);
    });
}

}  // namespace corvane
