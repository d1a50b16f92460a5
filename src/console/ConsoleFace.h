#pragma once

#include <functional>
#include <optional>

#include "app/Updater.h"
#include "console/Arguments.h"
#include "console/LogPrinter.h"
#include "platform/Terminal.h"

namespace corvane {

/// The console as a face of the workflow: the log and events on standard output, everything else on standard error,
/// questions on the terminal or answered by the options.
class ConsoleFace : public Log,
                    public Progress,
                    public PortPanel,
                    public PasswordPrompt,
                    public OperatorPrompts,
                    public RunView {
public:
    /// The device's password, in UTF-8, answers the first question for one; isAbandoned ends a question.
    ConsoleFace(const Arguments& arguments, LogPrinter& printer, TextSink& err, Terminal& terminal,
                std::optional<std::string> devicePassword);

    Face face() { return {*this, *this, *this, *this, *this, *this}; }

    /// Cancel was pressed: a question that is open counts as answered with Cancel.
    void abandonQuestions() { abandoned_ = true; }

    /// The last question before the device is changed is open: the run has its image, but the device is as it was.
    bool isAskingAboutHarm() const { return isAskingAboutHarm_; }

    /// A line on standard error.
    void say(const std::string& utf8);

    void ShowInfo(std::string_view text) override;
    void clear() override;
    void progress(std::int64_t value, std::int64_t maximum) override;
    void transferred(std::int64_t, std::int64_t) override {}
    void showPorts(const std::vector<std::string>& names) override;
    void enablePort(int, bool) override {}
    void hidePorts() override {}
    void trying(const std::string&, const std::string&) override {}
    void portRefused(const std::string& port) override;
    std::string inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) override;
    bool messageBox(Question question, const std::string& text) override;
    void chooseFirmware(FirmwareDialog& dialog) override;
    void running(bool) override {}
    void cancellable(bool) override {}
    void phase(RunPhase phase) override;
    void links(const std::vector<ReferenceLink>&) override {}
    void advice(const std::string& text) override { say(text); }

    /// Why a port did not open, in UTF-8.
    std::function<std::string(const std::string& port)> refusalReason;

    /// What may disturb a scan of these ports.
    std::function<std::vector<std::string>(const std::vector<std::string>& ports)> beforeScan;

private:
    int entryFor(const FirmwareDialog& dialog);
    std::optional<std::string> ask(const std::string& question, bool echo);
    void endProgressLine();

    const Arguments& arguments_;
    LogPrinter& printer_;
    TextSink& err_;
    Terminal& terminal_;
    std::optional<std::string> devicePassword_;  // until it has been given
    bool isDevicePasswordUsed_ = false;
    bool abandoned_ = false;
    bool isAskingAboutHarm_ = false;
    int shownPercent_ = -1;
};

}  // namespace corvane
