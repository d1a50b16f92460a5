#pragma once

#include "face/PasswordPrompt.h"
#include "protocol/DeviceQuery.h"

namespace corvane {

/// The password's bytes on the wire: each character XOR its right neighbour, the last one as it is.
Bytes EncodePassword(const std::string& text);

/// Identifies what is on the current port. Everything fails with False and logs nothing.
class DeviceLogin {
public:
    DeviceLogin(DeviceSession& session, PasswordPrompt& prompt) : session_(session), query_(session), prompt_(prompt) {}

    /// Logs in when the device wants it. A refused password is asked for until the device takes one or the answer is
    /// empty; what was typed stands in szPass afterwards.
    [[nodiscard]] bool Login(std::string& szPass);

    /// The device's version text, in Windows-1252; the time-out is the longest silence in ms.
    [[nodiscard]] bool GetVersion(std::string& szVersion, std::int32_t timeout = 3000);

    /// Whether an answer of a boot loader's has come in while the version was asked for.

    /// True when a boot loader answers a carriage return with its prompt.
    [[nodiscard]] bool DetectPrompt();

    /// Waits so many ms while events run.
    void Delay(std::int32_t lDelayTime);

private:
    bool isPasswordAccepted(const std::string& password);
    bool waitForPrompt(std::string& collected, clsTimeout& whole);

    DeviceSession& session_;
    DeviceQuery query_;
    PasswordPrompt& prompt_;
};

}  // namespace corvane
