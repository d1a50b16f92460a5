#pragma once

#include "face/Face.h"
#include "face/FirmwareDialog.h"
#include "record/Tape.h"

namespace corvane {

/// Stands between the workflow and a face and takes down the run: its log, phases, advice, questions and what was
/// answered. A run's begin and end are the tape's. It owns neither face nor tape.
class RecordedFace : private Log, private PasswordPrompt, private OperatorPrompts, private RunView {
public:
    RecordedFace(const Face& face, Tape& tape) : face_(face), tape_(tape) {}

    Face face() { return {*this, face_.progress, face_.panel, *this, *this, *this}; }

private:
    void ShowInfo(std::string_view text) override;
    void clear() override;
    std::string inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) override;
    bool messageBox(Question question, const std::string& text) override;
    void chooseFirmware(FirmwareDialog& dialog) override;
    void running(bool isRunning) override;
    void cancellable(bool isCancellable) override { face_.view.cancellable(isCancellable); }
    void phase(RunPhase phase) override;
    void links(const std::vector<ReferenceLink>& links) override { face_.view.links(links); }
    void advice(const std::string& text) override;

    Face face_;
    Tape& tape_;
};

}  // namespace corvane
