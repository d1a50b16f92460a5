#pragma once

#include <cstdint>
#include <optional>

#include "hid/VellSession.h"
#include "platform/Runtime.h"
#include "platform/clsTimeout.h"
#include "text/Variant.h"

namespace corvane {

/// One request and its reply at a time over the library's control channel. The reply is a status packet of two bytes
/// (6 accepted or 21 refused, and a length) and that many result bytes. An exchange waits at most 1000 ms for the first
/// byte and 150 ms for each further piece; events run meanwhile, and an exchange that they start is refused.
class HidCommandChannel {
public:
    HidCommandChannel(VellSession& session, Runtime& runtime) : session_(session), runtime_(runtime) {}

    /// Sends code, count and parameters. False when it was not accepted, or not sent at all: port closed, commands
    /// disabled, exchange running. Throws RuntimeError overflow for more than 255 parameters.
    [[nodiscard]] bool SendHIDCMD(std::uint8_t bCmd, const Bytes& bParams, Bytes& bResults);

    /// Sends the bytes as they are; says nothing about IsCommandNotSupported.
    [[nodiscard]] bool SendHIDRawCmd(const Bytes& bRawCmds, Bytes& bResults);

    /// Ends the running exchange at its next turn.
    void CancelHIDCommand() { cancel_ = true; }

    /// True inside every exchange call, a refused one included.
    bool IsBusy() const { return nesting_ != 0; }
    bool isExchanging() const { return busy_; }

    bool IsSendHIDCmdNAK() const { return nakSeen_; }
    bool IsCommandNotSupported() const { return notSupported_; }

    bool KestrelCmdSetEnabled() const { return enabled_; }
    void KestrelCmdSetEnabled(bool bIsEnabled) { enabled_ = bIsEnabled; }

    /// The library says that control data has come: the time limit starts anew.
    void onControlData() { timer().Reset(); }

private:
    enum class Kind { command, raw };
    enum class Turn { wait, again, stop };
    struct Reply {
        bool statusRead = false;
        std::uint8_t status = 0;
        std::int32_t length = 0;
        std::int32_t seen = 0;  // bytes that waited at the last turn
        bool result = false;
    };

    bool canStart();
    bool run(Kind kind, const Bytes& frame, Bytes& bResults);
    Turn turn(Reply& reply, Kind kind, Bytes& bResults);
    Turn readStatus(Reply& reply);
    Turn readResults(Reply& reply, Kind kind, Bytes& bResults);
    clsTimeout& timer();

    VellSession& session_;
    Runtime& runtime_;
    std::optional<clsTimeout> timer_;
    bool busy_ = false;
    bool cancel_ = false;
    bool nakSeen_ = false;
    bool notSupported_ = false;
    bool enabled_ = true;
    std::int16_t nesting_ = 0;
};

}  // namespace corvane
