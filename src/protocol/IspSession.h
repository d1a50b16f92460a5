#pragma once

#include "protocol/DeviceLogin.h"
#include "protocol/LineReader.h"

namespace corvane {

/// The way into the boot loader, its erase and its restart. Each step logs its text and its " < OK" or " < NG".
class IspSession {
public:
    IspSession(DeviceSession& session, PasswordPrompt& prompt)
        : session_(session), query_(session), login_(session, prompt), lines_(session) {}

    /// Switches the device into its boot loader at the session's ispBaudRate; True when its prompt was seen then.
    [[nodiscard]] bool GoToISP();

    /// What became of the request to switch in the last GoToISP, prompt or not. Without an answer it may have been
    /// obeyed. Locked: the device wants a password first, and was given none that it takes.
    enum class Switch { refused, locked, unanswered, accepted };
    Switch lastSwitch() const { return switch_; }

    /// True when the device acknowledged that its flash is erased. After one that was not answered it must also prompt.
    [[nodiscard]] bool ISP_Erase();

    /// How many ms the last erase took.
    std::int32_t eraseTime() const { return eraseTime_; }

    /// Another device follows.
    void beginDevice() { isEraseOwed_ = false; }

    /// Whether the last erase got no answer at all.
    bool wasEraseSilent() const { return isEraseOwed_; }

    /// Restarts the device into its application; nothing is awaited.
    void ISP_Reset();

    /// The same once more, without a word in the log.
    void restartAgain();

    /// True when the boot loader prompts at the line's present settings.
    bool isPrompting() { return login_.DetectPrompt(); }

    /// Switches a device that has fallen back into its application once more, without a word in the log; true when the
    /// prompt was seen then.
    [[nodiscard]] bool returnToBootLoader();

    /// Waits in steps of 50 ms, up to the limit in ms, until the open port has sent everything.
    void wait_output_empty(std::int32_t limit);

private:
    Switch switchTarnPlus();
    Switch switchTarn();
    bool awaitBootLoader();
    bool findPrompt();
    bool awaitPrompt();
    void dropEcho();
    void setPortSettings(const std::string& settings);

    DeviceSession& session_;
    DeviceQuery query_;
    DeviceLogin login_;
    LineReader lines_;
    Switch switch_ = Switch::refused;
    std::int32_t eraseTime_ = 0;
    bool isEraseOwed_ = false;  // an erase may still be answered
};

}  // namespace corvane
