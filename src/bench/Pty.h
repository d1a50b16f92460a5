#pragma once

#include <cstdint>
#include <string>

#include "bench/Descriptor.h"
#include "text/Variant.h"

namespace corvane::bench {

/// A pseudo-terminal whose slave is a device's port: raw and without echo from the start. Destroying it unplugs the
/// port: whoever holds it reads its end. Throws std::system_error when the system has none to give.
///
/// The slave is held open here as well, because a master whose slave nobody holds is reported as hung up again and
/// again.
class Pty {
public:
    Pty();

    const std::string& path() const { return path_; }

    /// Readable when the host has written something.
    int descriptor() const { return master_.get(); }

    /// The line rate (bits a second) that the host has set.
    std::uint32_t hostRate() const;

    /// The least time, in microseconds, that the system takes to carry a byte from one end to the other. A wire has no
    /// such delay, so whoever paces one takes it off.
    std::int64_t carryingTime() const { return carryingTime_; }

    /// What the host has written; empty when there is nothing.
    Bytes read();

    /// What the host has no room for is lost, as on a wire.
    void write(const Bytes& bytes);

    /// What a serial port does by itself when a program opens it: what came before is gone.
    void discardUnread();

    /// What it does when the last program has let go: the claim to be the only one ends, also that of a killed program.
    void release();

private:
    Descriptor master_;
    Descriptor slave_;
    std::string path_;
    std::int64_t carryingTime_;
};

}  // namespace corvane::bench
