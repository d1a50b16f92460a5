#include "bench/ChildProcess.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

// This system's header forgets to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}

namespace corvane::bench {
namespace {

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentWith(const Variables& variables) {
    std::vector<std::string> all;
    for (const auto& [name, value] : variables) all.push_back(name + "=" + value);
    for (char** one = environ; *one; ++one) {
        const std::string text = *one;
        if (!variables.count(text.substr(0, text.find('=')))) all.push_back(text);
    }
    return all;
}

pid_t spawn(const std::vector<std::string>& command, const Variables& variables) {
    auto arguments = command;
    auto environment = environmentWith(variables);
    // The bench blocks some signals to take them itself, and ignores SIGPIPE; the command must not inherit either.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, toDefault;
    sigemptyset(&none);
    sigemptyset(&toDefault);
    sigaddset(&toDefault, SIGPIPE);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &toDefault);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, command.front().c_str(), nullptr, &attributes, pointersTo(arguments).data(),
                                   pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    if (error) throw std::system_error(error, std::generic_category(), command.front());
    return pid;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const Variables& variables)
    : pid_(spawn(command, variables)), ended_(pidfd_open(pid_, 0), "pidfd_open") {}

void ChildProcess::signal(int number) const { pidfd_send_signal(ended_.get(), number, nullptr, 0); }

int ChildProcess::status() const {
    int status = 0;
    if (waitpid(pid_, &status, 0) < 0) return 127;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace corvane::bench
