#pragma once

#include <csignal>
#include <functional>

#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {

/// Turns SIGINT, SIGTERM, SIGHUP and SIGQUIT, as far as they are not ignored, into calls of a handler from DoEvents
/// while it lives; afterwards those are held back again that were before. In a program with several threads they must
/// have been held back before the second one began.
class SignalSource {
public:
    SignalSource(LinuxRuntime& runtime, std::function<void()> handler);
    ~SignalSource();
    SignalSource(const SignalSource&) = delete;
    SignalSource& operator=(const SignalSource&) = delete;

private:
    bool take();

    LinuxRuntime& runtime_;
    std::function<void()> handler_;
    sigset_t heldBefore_{};
    int descriptor_;
};

/// Nothing but those four, the signals of a fault and SIGKILL ends the program from here on: a reader of its output
/// that goes away, or a limit to the size of files, is an error of a write then. Timers, real-time signals and the like
/// have no meaning for it, and must not cost a device its firmware.
void ignoreIdleSignals();

/// Lets signals do again what they do in a freshly started program. A program inherits from the one that starts it
/// which signals are held back, and a SignalSource there holds back those that it takes.
void releaseSignals();

/// Keeps the four for the SignalSource that is made next, and from the end of its life on, so that nothing is left half
/// done; in this thread and in those that it begins.
void holdEndingSignals();

/// What a child process calls before it becomes another program: it takes signals as a fresh one does and gets SIGTERM
/// when this process ends, however that comes about.
std::function<void()> companionSetup();

}  // namespace corvane
