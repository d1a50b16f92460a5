#pragma once

#include <map>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

#include "bench/Descriptor.h"

namespace corvane::bench {

/// Environment variables by name.
using Variables = std::map<std::string, std::string>;

/// A program that the bench has started, with the bench's standard streams.
class ChildProcess {
public:
    /// Starts it with these environment variables beside the bench's own; throws std::system_error when that fails.
    ChildProcess(const std::vector<std::string>& command, const Variables& variables);

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
