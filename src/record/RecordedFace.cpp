#include "record/RecordedFace.h"

namespace corvane {
namespace {

constexpr char kRun[] = "run";

const char* nameOf(RunPhase phase) {
    switch (phase) {
        case RunPhase::idle:
            return "idle";
        case RunPhase::login:
            return "login";
        case RunPhase::information:
            return "information";
        case RunPhase::scan:
            return "scan";
        case RunPhase::selection:
            return "selection";
        case RunPhase::image:
            return "image";
        case RunPhase::bootLoader:
            return "boot-loader";
        case RunPhase::erase:
            return "erase";
        case RunPhase::program:
            return "program";
        case RunPhase::reset:
            return "reset";
        case RunPhase::proof:
            return "proof";
        case RunPhase::removal:
            return "removal";
        case RunPhase::nextDevice:
            return "next-device";
    }
    return "";
}

}  // namespace

void RecordedFace::ShowInfo(std::string_view text) {
    tape_.note("log", kRun, std::string(text));
    face_.log.ShowInfo(text);
}

void RecordedFace::clear() {
    tape_.note("clear", kRun);
    face_.log.clear();
}

/// The answer is a secret from the moment that it is given.
std::string RecordedFace::inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) {
    tape_.keepSecret(byDefault);
    tape_.note("asked", kRun, prompt);
    auto answer = face_.password.inputBox(prompt, title, byDefault);
    tape_.keepSecret(answer);
    tape_.note("answered", kRun, answer.empty() ? "nothing" : "a password");
    return answer;
}

bool RecordedFace::messageBox(Question question, const std::string& text) {
    tape_.note("asked", kRun, text);
    const bool isOk = face_.prompts.messageBox(question, text);
    tape_.note("answered", kRun, isOk ? "OK" : "Cancel");
    return isOk;
}

void RecordedFace::chooseFirmware(FirmwareDialog& dialog) {
    std::string offered;
    for (const auto& entry : dialog.entries()) offered += (offered.empty() ? "" : "\r\n") + entry.text;
    tape_.note("asked", kRun, "Which image?\r\n" + offered);
    face_.prompts.chooseFirmware(dialog);
    tape_.note("answered", kRun, dialog.isChosen() ? dialog.result() : "Cancel");
}

void RecordedFace::running(bool isRunning) {
    if (isRunning) tape_.begin();
    face_.view.running(isRunning);
    if (!isRunning) tape_.end();
}

void RecordedFace::phase(RunPhase phase) {
    tape_.note("phase", kRun, nameOf(phase));
    face_.view.phase(phase);
}

void RecordedFace::advice(const std::string& text) {
    tape_.note("advice", kRun, text);
    face_.view.advice(text);
}

}  // namespace corvane
