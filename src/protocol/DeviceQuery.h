#pragma once

#include "protocol/DeviceSession.h"

namespace corvane {

/// One request and its reply, the base of every exchange with a device that runs its application.
class DeviceQuery {
public:
    explicit DeviceQuery(DeviceSession& session) : session_(session) {}

    /// Sends a function with its parameter to a machine address (0 in this program) and waits for the reply; dwTimeout
    /// is the longest silence in ms. True when the device accepted. The type of vReplay on entry selects how the
    /// reply's data is converted; a refused reply delivers its data too, every other failure leaves the empty value.
    /// The port must be in binary input mode.
    [[nodiscard]] bool Query(std::uint8_t bFunction, Variant& vReplay, const Variant& vParam, std::uint8_t bMachine,
                             std::int32_t dwTimeout);

    /// The same without interest in the reply's data.
    [[nodiscard]] bool Query(std::uint8_t bFunction, std::int32_t dwTimeout);

    /// Whether the last query got a sound reply, accepted or refused.
    bool wasAnswered() const { return answered_; }

private:
    [[nodiscard]] bool exchange(const Bytes& frame, std::int32_t timeout, Variant& reply);

    DeviceSession& session_;
    bool answered_ = false;
};

}  // namespace corvane
