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
#include "platform/linux/QtDigest.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

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

/// A file for reading, which a process that is started meanwhile inherits.
class Opened {
public:
    explicit Opened(const std::string& path) : descriptor_(::open(path.c_str(), O_RDONLY | O_NONBLOCK)) {}
    ~Opened() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

}  // namespace

LinuxLauncher::~LinuxLauncher() {
    for (const int ended : running_) {
        runtime_.unwatch(ended);
        ::close(ended);
    }
}

std::string LinuxLauncher::fault(const std::string& path) { return programFault(path); }

std::string LinuxLauncher::start(const std::string& path, const std::string& sha256,
                                 const std::vector<Variable>& variables) try {
    // What is looked at is what is started, whatever the path leads to by then. A script's interpreter opens it, too.
    const Opened file(path);
    if (file.descriptor() < 0) return reason(path, errno);
    struct stat found {};
    if (fstat(file.descriptor(), &found) < 0) return reason(path, errno);
    if (!S_ISREG(found.st_mode)) return reason(path, EACCES);
    const auto wanted = (found.st_mode & 07777 & ~(S_IWGRP | S_IWOTH)) | S_IXUSR;
    if (wanted != (found.st_mode & 07777) && fchmod(file.descriptor(), wanted) < 0) return reason(path, errno);
    const auto program = "/proc/self/fd/" + std::to_string(file.descriptor());
    if (QtDigest().sha256(readFile(program)) != sha256) return path + ": it was changed after it was checked";
    return spawn(program, path, nullptr, variables);
} catch (const RuntimeError& error) {
    return path + ": " + error.description();
}

std::string LinuxLauncher::open(const std::string& address) {
    if (address.empty() || address.front() == '-') return "\"" + address + "\" is no address";
    return spawn("xdg-open", "xdg-open", &address, {});
}

std::string LinuxLauncher::spawn(const std::string& program, const std::string& givenName, const std::string* argument,
                                 const std::vector<Variable>& variables) {
    const Detached how;
    std::string name = givenName;
    std::string first = argument ? *argument : std::string();
    char* arguments[] = {name.data(), argument ? first.data() : nullptr, nullptr};
    auto texts = environmentWith(variables);
    std::vector<char*> environment;
    for (auto& text : texts) environment.push_back(text.data());
    environment.push_back(nullptr);
    pid_t process = 0;
    const int error =
        posix_spawnp(&process, program.c_str(), &how.actions, &how.attributes, arguments, environment.data());
    if (error) return reason(name, error);
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
