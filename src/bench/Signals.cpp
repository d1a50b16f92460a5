#include "bench/Signals.h"

#include <sys/signalfd.h>

namespace corvane::bench {

Signals::Signals(Loop& loop, Handler handler) : loop_(loop), handler_(std::move(handler)) {
    sigset_t taken;
    sigemptyset(&taken);
    for (const int one : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&taken, one);
    signals_ = Descriptor(signalfd(-1, &taken, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd");
    sigprocmask(SIG_BLOCK, &taken, &before_);
    loop_.watch(signals_.get(), [this] { take(); });
}

Signals::~Signals() {
    loop_.unwatch(signals_.get());
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void Signals::take() {
    signalfd_siginfo info{};
    if (read(signals_.get(), &info, sizeof info) != sizeof info) return;
    handler_(static_cast<int>(info.ssi_signo), info.ssi_code == SI_KERNEL);
}

}  // namespace corvane::bench
