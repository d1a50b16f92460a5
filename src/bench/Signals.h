#pragma once

#include <functional>
#include <signal.h>

#include "bench/Descriptor.h"
#include "bench/Loop.h"

namespace corvane::bench {

/// Takes SIGINT, SIGTERM and SIGHUP through the loop for as long as it lives.
class Signals {
public:
    using Handler = std::function<void(int number, bool fromTerminal)>;

    Signals(Loop& loop, Handler handler);
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

private:
    void take();

    Loop& loop_;
    Handler handler_;
    sigset_t before_{};
    Descriptor signals_;
};

}  // namespace corvane::bench
