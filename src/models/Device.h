#pragma once

#include <memory>

#include "models/BootLoader.h"
#include "models/Peer.h"

namespace corvane::models {

/// A simulated device at the far end of a line: an application, a boot loader, a flash memory that holds an old
/// application, and the faults it was given. A plain state machine: it answers at once and never waits; what it says
/// is not paced (PacedLine does that). It listens only while the host's rate is that of the program that runs on it.
class Device : public Peer {
public:
    explicit Device(DeviceOptions options);

    void hear(Micros now, const Bytes& bytes, std::uint32_t hostRate) override;
    std::optional<Micros> nextAt() const override;
    Bytes speak(Micros now) override;
    bool isPlugged() const override { return board_.isPlugged; }

    /// Pulls the plug, or puts it in again: the device starts anew, in its boot loader when the flash memory holds no
    /// whole application. What was programmed stays.
    void unplug() { board_.isPlugged = false; }
    void plugIn(Micros now);

    const DeviceOptions& options() const { return board_.options; }
    const DeviceLog& log() const { return board_.log; }
    const Flash& flash() const { return board_.flash; }
    const std::string& version() const { return board_.version; }
    bool isInBoot() const { return running_ == &boot_; }

    /// More faults may be added while it runs.
    Faults& faults() { return board_.faults; }

private:
    void hearByte(Micros now, std::uint8_t byte, std::uint32_t hostRate);
    void sayGarbage(Micros now);
    void run(Program* program, Micros now);
    void checkBabble(Micros now);
    std::uint32_t rate() const;

    Board board_;
    BootLoader boot_;
    std::unique_ptr<Program> application_;  // none for the kinds that have none
    Program* running_ = nullptr;            // none for the kinds that never answer
    std::uint32_t hostRate_;
    Micros lastHeard_ = 0;
    Micros deafUntil_ = 0;
    int garbageLeft_;
    std::optional<Micros> babbleAt_;
    std::size_t babbled_ = 0;
};

}  // namespace corvane::models
