#pragma once

#include <functional>

#include "platform/linux/events/LinuxRuntime.h"

namespace corvane {

/// Turns SIGINT, SIGTERM and SIGHUP, as far as they are not ignored, into calls of a handler from DoEvents, and ignores
/// SIGPIPE, while it lives.
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
    int descriptor_;
};

/// A reader of this program's output that goes away is an error of a write then, and does not end the program.
void ignoreBrokenPipes();

/// Takes signals as a program does that nobody has prepared. Whoever starts a program hands down which signals are held
/// back, and those that another one's SignalSource takes are.
void releaseSignals();

/// Keeps SIGINT, SIGTERM and SIGHUP for the SignalSource that is made next, so that nothing is left half done.
void holdEndingSignals();

/// What a child process calls before it becomes another program: it takes signals as a fresh one does and gets SIGTERM
/// when this process ends, however that comes about.
std::function<void()> companionSetup();

}  // namespace corvane
