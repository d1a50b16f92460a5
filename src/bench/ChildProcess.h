#pragma once

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include "bench/Descriptor.h"

namespace corvane::bench {

/// A program that the bench has started, with the bench's standard streams.
class ChildProcess {
public:
    /// Starts it with one more environment variable; throws std::system_error when that fails.
    ChildProcess(const std::vector<std::string>& command, const std::string& variable, const std::string& value);

    /// Readable when it has ended.
    int descriptor() const { return ended_.get(); }

    void signal(int number) const;

    /// Its exit status, 128 + the number when a signal has ended it. Only once, after its end.
    int status() const;

private:
    pid_t pid_;
    Descriptor ended_;
};

}  // namespace corvane::bench
