#pragma once

#include <array>

#include "platform/PortMap.h"
#include "platform/linux/events/LinuxRuntime.h"
#include "platform/linux/serial/TtyLine.h"
#include "platform/serial/BufferedSerialControl.h"
#include "platform/serial/ParityMarks.h"

namespace corvane {

/// The serial control over a tty. Output never blocks and drops nothing: what the system does not take at once is kept
/// and sent inside the program's waits. SThreshold counts what is kept so. With a parity set, a byte that arrives with
/// a parity error becomes ParityReplace; without one the system has nothing to tell.
class TermiosSerialControl : public BufferedSerialControl {
public:
    /// Neither is owned. The map tells where COM<number> lies.
    TermiosSerialControl(LinuxRuntime& runtime, PortMap& map)
        : BufferedSerialControl(runtime), io_(runtime), map_(map) {}
    ~TermiosSerialControl() override { closeLine(); }

    bool hasLine() const override { return !line_.isPseudo(); }
    std::int32_t CommID() override { return line_.descriptor(); }
    std::string FormatMessage(std::uint32_t code) const override;

private:
    OpenFailure openLine() override;
    void closeLine() override;
    std::uint32_t readLine(CommState& state) override;
    std::uint32_t writeLine(const CommState& state) override;
    void applyControlLines() override;
    void applyHandShaking() override;
    void applyBreak() override { line_.setBreak(Break()); }
    bool isHolding(LineInput input) override;
    void send(const Bytes& bytes) override;
    std::int32_t unsent() override { return static_cast<std::int32_t>(kept_.size()) + line_.unsent(); }
    void discardUnsent() override;
    void discardUnread() override;

    void onIo(std::uint32_t events);
    bool receive();
    bool drain();
    void watch();
    void take(const std::uint8_t* data, std::size_t size);

    LinuxRuntime& io_;
    PortMap& map_;
    TtyLine line_;
    LineSetup setup_;
    Bytes kept_;  // to send, when the system takes it
    bool watchesOutput_ = false;
    ParityMarks marks_;
    std::array<std::uint8_t, 4096> chunk_{};
};

}  // namespace corvane
