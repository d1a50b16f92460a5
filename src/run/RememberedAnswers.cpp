#include "run/RememberedAnswers.h"

#include <algorithm>

namespace corvane {
namespace {

class Agreement : public OperatorPrompts {
    bool messageBox(Question, const std::string&) override { return true; }
    void chooseFirmware(FirmwareDialog&) override {}
};

}  // namespace

void RememberedAnswers::begin(bool keepsAnswers) {
    if (!keepsAnswers) {
        answers_.clear();
        choice_.reset();
        typed_.clear();
    }
    mayGivePassword_ = !typed_.empty();
}

bool RememberedAnswers::messageBox(Question question, const std::string& text) {
    if (const auto known = answers_.find(text); known != answers_.end()) return known->second;
    const bool agrees = prompts_.messageBox(question, text);
    if (agrees || question == Question::newerProgram) answers_[text] = agrees;
    return agrees;
}

void RememberedAnswers::chooseFirmware(FirmwareDialog& dialog) {
    const auto& entries = dialog.entries();
    for (std::size_t i = 0; choice_ && i < entries.size(); ++i) {
        const auto& record = entries[i].record;
        if (record.section != choice_->section || record.version != choice_->version) continue;
        dialog.select(static_cast<int>(i));
        Agreement agreement;
        if (isAgreed(dialog)) return dialog.ok(agreement);
    }
    prompts_.chooseFirmware(dialog);
    if (!dialog.isChosen()) return;
    const auto& record = entries[static_cast<std::size_t>(dialog.selected())].record;
    choice_ = Choice{record.section, record.version, dialog.cautions()};
}

bool RememberedAnswers::isAgreed(const FirmwareDialog& dialog) const {
    const auto& known = choice_->cautions;
    const auto cautions = dialog.cautions();
    return std::all_of(cautions.begin(), cautions.end(), [&known](const auto& caution) {
        return std::find(known.begin(), known.end(), caution) != known.end();
    });
}

std::string RememberedAnswers::inputBox(const std::string& prompt, const std::string& title,
                                        const std::string& byDefault) {
    if (!mayGivePassword_) typed_ = password_.inputBox(prompt, title, byDefault);
    mayGivePassword_ = false;
    return typed_;
}

}  // namespace corvane
