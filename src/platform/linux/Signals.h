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

/// Lets signals do again what they do in a freshly started program. A program inherits from the one that starts it
/// which signals are held back, and a SignalSource there holds back those that it takes.
void releaseSignals();

/// Keeps SIGINT, SIGTERM and SIGHUP for the SignalSource that is made next, so that nothing is left half done.
void holdEndingSignals();

/// What a child process calls before it becomes another program: it takes signals as a fresh one does and gets SIGTERM
/// when this process ends, however that comes about.
std::function<void()> companionSetup();

}  // namespace corvane
