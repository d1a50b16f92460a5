#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/LinuxConsole.h"
#include "support/PseudoTerminal.h"

namespace corvane {
namespace {

/// A pipe whose reading end the test holds.
class Pipe {
public:
    Pipe() {
        EXPECT_EQ(pipe(ends_), 0);
        fcntl(ends_[0], F_SETFL, O_NONBLOCK);
    }
    ~Pipe() {
        closeReader();
        close(ends_[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int writer() const { return ends_[1]; }

    std::string taken() {
        std::string all;
        char buffer[4096];
        for (ssize_t count = 0; (count = read(ends_[0], buffer, sizeof buffer)) > 0;) {
            all.append(buffer, static_cast<std::size_t>(count));
        }
        return all;
    }

    void closeReader() {
        if (ends_[0] >= 0) close(ends_[0]);
        ends_[0] = -1;
    }

private:
    int ends_[2] = {-1, -1};
};

TEST(StandardStream, NeverWaitsForItsReader) {
    Pipe pipe;
    StandardStream stream(pipe.writer());
    std::string text;
    for (int i = 0; i < 40000; ++i) text += "line " + std::to_string(i) + "\n";
    stream.write(text);  // a pipe holds 64 KiB of it, and nobody reads yet
    std::string taken;
    for (int i = 0; i < 100 && taken.size() < text.size(); ++i) {
        taken += pipe.taken();
        stream.flush();
    }
    EXPECT_EQ(taken, text);
    EXPECT_FALSE(stream.isTerminal());
}

TEST(StandardStream, DropsWhatNobodyReadsAnyMore) {
    std::signal(SIGPIPE, SIG_IGN);
    Pipe pipe;
    StandardStream stream(pipe.writer());
    stream.write("heard");
    EXPECT_EQ(pipe.taken(), "heard");
    pipe.closeReader();
    stream.write(std::string(1 << 20, 'x'));
    stream.write("more");
    stream.finish();
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(SignalSource, TurnsSignalsIntoCalls) {
    LinuxRuntime runtime;
    int calls = 0;
    {
        const SignalSource source(runtime, [&] { ++calls; });
        for (const int one : {SIGINT, SIGTERM, SIGHUP}) {
            raise(one);
            runtime.WaitActivity(1);
            EXPECT_EQ(calls, 0);
            runtime.DoEvents();
            EXPECT_EQ(calls, 1);
            calls = 0;
        }
        raise(SIGPIPE);
        runtime.DoEvents();
    }
    EXPECT_EQ(calls, 0);
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(SignalSource, LeavesIgnoredSignalsAloneAndSwallowsLateOnes) {
    LinuxRuntime runtime;
    std::signal(SIGHUP, SIG_IGN);
    int calls = 0;
    {
        const SignalSource source(runtime, [&] { ++calls; });
        raise(SIGHUP);
        runtime.DoEvents();
        EXPECT_EQ(calls, 0);
        raise(SIGTERM);  // nobody looks any more
    }
    runtime.DoEvents();
    EXPECT_EQ(calls, 0);
    std::signal(SIGHUP, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
}

}  // namespace
}  // namespace corvane
