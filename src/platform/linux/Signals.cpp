#include "platform/linux/Signals.h"

#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

namespace corvane {
namespace {

constexpr std::initializer_list<int> kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

/// Signals that end a program which does not know them, and that ask nothing of this one. After SIGPIPE and SIGXFSZ the
/// write says what is wrong.
constexpr std::initializer_list<int> kIdleSignals = {SIGPIPE, SIGXFSZ, SIGUSR1, SIGUSR2, SIGALRM,  SIGVTALRM,
                                                     SIGPROF, SIGXCPU, SIGIO,   SIGPWR,  SIGSTKFLT};

void setIdleSignals(sighandler_t what) {
    for (const int one : kIdleSignals) std::signal(one, what);
    for (int one = SIGRTMIN; one <= SIGRTMAX; ++one) std::signal(one, what);
}

/// The signals that cancel, except those that the program was started with to ignore, as nohup does.
sigset_t cancelSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int one : kEndingSignals) {
        struct sigaction present {};
        sigaction(one, nullptr, &present);
        if (present.sa_handler != SIG_IGN) sigaddset(&signals, one);
    }
    return signals;
}

}  // namespace

SignalSource::SignalSource(LinuxRuntime& runtime, std::function<void()> handler)
    : runtime_(runtime), handler_(std::move(handler)) {
    const sigset_t signals = cancelSignals();
    sigprocmask(SIG_BLOCK, &signals, &heldBefore_);
    descriptor_ = signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "signalfd");
    runtime_.watch(descriptor_, EPOLLIN, [this](std::uint32_t) {
        while (take()) runtime_.post(this, handler_);
    });
}

bool SignalSource::take() {
    signalfd_siginfo info{};
    return ::read(descriptor_, &info, sizeof info) == sizeof info;
}

SignalSource::~SignalSource() {
    runtime_.forget(this);
    runtime_.unwatch(descriptor_);
    while (take()) {
        // One that came too late to change anything must not kill a program that has done its work.
    }
    ::close(descriptor_);
    sigprocmask(SIG_SETMASK, &heldBefore_, nullptr);
}

void ignoreIdleSignals() { setIdleSignals(SIG_IGN); }

void releaseSignals() {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void holdEndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int one : kEndingSignals) sigaddset(&signals, one);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
}

std::function<void()> companionSetup() {
    return [parent = ::getpid()] {
        setIdleSignals(SIG_DFL);
        releaseSignals();
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (::getppid() != parent) ::_exit(1);  // it has ended before it could be watched
    };
}

}  // namespace corvane
