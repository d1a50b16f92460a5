#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/LinuxConsole.h"
#include "platform/linux/Signals.h"
#include "platform/linux/files/StandardDescriptors.h"

namespace corvane {
namespace {

TEST(StandardStream, NeverWaitsForItsReaderAndDropsWhatNobodyReads) {
    std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    StandardStream stream(ends[1]);
    EXPECT_FALSE(stream.isTerminal());
    std::string text, taken;
    for (int i = 0; i < 40000; ++i) text += "line " + std::to_string(i) + "\n";
    stream.write(text);  // a pipe holds 64 KiB of it, and nobody reads yet
    char buffer[65536];
    for (int i = 0; i < 100 && taken.size() < text.size(); ++i) {
        taken.append(buffer, static_cast<std::size_t>(std::max<ssize_t>(0, read(ends[0], buffer, sizeof buffer))));
        stream.flush();
    }
    EXPECT_EQ(taken, text);
    close(ends[0]);
    stream.write(std::string(1 << 20, 'x'));
    stream.write("more");
    stream.finish();
    close(ends[1]);
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(SignalSource, TurnsSignalsThatAreNotIgnoredIntoCallsWhileItLives) {
    LinuxRuntime runtime;
    int calls = 0;
    std::signal(SIGHUP, SIG_IGN);
    ignoreIdleSignals();
    {
        const SignalSource source(runtime, [&] { ++calls; });
        for (const int one : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM,
                              SIGPROF, SIGXCPU, SIGIO, SIGPWR, SIGSTKFLT, SIGRTMIN, SIGRTMAX}) {
            const int before = calls;
            raise(one);
            runtime.WaitActivity(1);
            EXPECT_EQ(calls, before) << one;
            runtime.DoEvents();
        }
        raise(SIGTERM);  // nobody looks any more
    }
    runtime.DoEvents();
    EXPECT_EQ(calls, 3);
    for (int one = 1; one <= SIGRTMAX; ++one) std::signal(one, SIG_DFL);
}

TEST(StandardDescriptors, AreThereBeforeAnythingElseIsOpened) {
    const auto startedWithoutThem = [] {
        for (const int one : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(one);
        fillStandardDescriptors();
        _exit(open("/dev/null", O_RDONLY));
    };
    const int first = open("/dev/null", O_RDONLY);  // what a program opens that was started with all three
    close(first);
    EXPECT_EXIT(startedWithoutThem(), testing::ExitedWithCode(first), "");
}

}  // namespace
}  // namespace corvane
