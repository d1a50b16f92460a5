#pragma once

#include <map>
#include <optional>

#include "face/FirmwareDialog.h"
#include "face/PasswordPrompt.h"

namespace corvane {

/// Stands between the workflow and the face that asks: hands every question on and keeps the answers, so that for the
/// next device of a kind nobody is asked what was answered before. What is new about that device is asked. Owns neither
/// of both.
class RememberedAnswers : public OperatorPrompts, public PasswordPrompt {
public:
    RememberedAnswers(OperatorPrompts& prompts, PasswordPrompt& password) : prompts_(prompts), password_(password) {}

    /// A run begins, with the answers of the one before, or with none.
    void begin(bool keepsAnswers);

    /// An agreement counts for the same question in the same words; so does a refusal of a newer program.
    bool messageBox(Question question, const std::string& text) override;

    /// The same image is taken when nothing is unusual about it that was not said of it before.
    void chooseFirmware(FirmwareDialog& dialog) override;

    /// The password is given once a run; a device that does not take it is a new question.
    std::string inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) override;

private:
    /// What the operator has agreed to install.
    struct Choice {
        std::string section, version;
        std::vector<std::string> cautions;
    };
    bool isAgreed(const FirmwareDialog& dialog) const;

    OperatorPrompts& prompts_;
    PasswordPrompt& password_;
    std::map<std::string, bool> answers_;  // by the question's text
    std::optional<Choice> choice_;
    std::string typed_;
    bool mayGivePassword_ = false;
};

}  // namespace corvane
