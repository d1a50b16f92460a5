#include "window/presenter/MainPresenter.h"

#include <filesystem>
#include <utility>

#include "settings/LocalFile.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {

void MainPresenter::load() {
    loading_ = true;
    stored().load(updater_.choices);
    loaded_ = updater_.choices;
    optLine_Click(updater_.choices.offLine);
    loading_ = false;
    changed();
}

bool MainPresenter::unload() {
    const bool saved = stored().save(updater_.choices, loaded_);
    updater_.shutDown();
    return saved;
}

void MainPresenter::optLine_Click(bool offLine) {
    if (isBusy()) return;
    updater_.choices.refusal = {};
    updater_.choices.offLine = offLine;
    if (!offLine) selectLast();
    changed();
}

void MainPresenter::optFile_Walked() {
    loading_ = true;
    optFile_Click();
    loading_ = false;
}

void MainPresenter::optFile_Click() {
    if (isBusy()) return;
    updater_.choices.useFile = true;
    if (!loading_) cmdLoadFile_Click();
    changed();
}

void MainPresenter::optLast_Click() {
    if (isBusy()) return;
    updater_.choices.refusal = {};
    selectLast();
    changed();
}

void MainPresenter::selectLast() { updater_.choices.useFile = false; }

void MainPresenter::cmdLoadFile_Click() {
    if (isBusy()) return;
    const auto path = pickFile ? pickFile() : std::nullopt;
    if (path) loadFile(*path);
}

bool MainPresenter::loadFile(const std::string& path) {
    const bool loaded = LoadHexInfo(updater_.choices, path, updater_.platform().digest);
    if (loaded) {
        // Whether settings can be written at all is said at the end of the session.
        stored().addRecentFile(path);
        optFile_Walked();  // selecting optFile must not ask for a file again
    } else {
        if (updater_.choices.image.isNone()) selectLast();
        changed();
    }
    return loaded;
}

void MainPresenter::dropFile(const std::string& path) {
    if (loadFile(path)) {
        updater_.choices.offLine = true;
        changed();
    }
}

void MainPresenter::readerChanged(const std::string& text, bool isPluggedIn) {
    lookAtPorts();
    if (isBusy()) return;
    if (isPluggedIn) situation_.changed();
    situation_.say(text);
}

std::string MainPresenter::localStep(const std::string& deviceVersion) const {
    const auto& choices = updater_.choices;
    if (!choices.image.isNone()) {
        const auto& info = choices.image.info();
        const auto step = versionStep(deviceVersion, info.version);
        return step.empty() || containsNoCase(deviceVersion, info.program) ? step : "made for another product";
    }
    if (choices.imageProblem) return "The file " + fromUtf8(choices.imageProblem.words) + ". Choose another one.";
    return choices.useFile ? "Choose a file to install." : "";
}

Outcome MainPresenter::start(bool force) {
    updater_.choices.refusal = {};
    updater_.choices.promise = stored().connection().asksVersion ? Promise::running : Promise::programmed;
    if (!isBusy() && !isInSeries_) {
        updater_.series().begin();
        reloadLocalFile(updater_.choices, updater_.platform().digest);
    }
    auto outcome = updater_.start(force, isInSeries_ || (!force && situation_.isForNextDevice()));
    if (onChange) onChange();
    return outcome;
}

void MainPresenter::chkSeries_Click(bool isWanted) {
    wantsSeries_ = isWanted;
    if (!isWanted) updater_.series().end();
}

bool MainPresenter::waitForNext(const Outcome& outcome) {
    isInSeries_ = wantsSeries_ && !closes_ && updater_.series().next(outcome);
    return isInSeries_;
}

void MainPresenter::takeRescueImage() {
    const auto path = situation_.rescueImage();
    if (path.empty()) return;
    updater_.choices.offLine = true;
    loadFile(path);
}

void MainPresenter::forget(const InterruptedRun& run) {
    if (isBusy()) return;
    const auto& path = updater_.journal().path();
    const auto problem = updater_.journal().forget({run});
    problem.empty() ? situation_.forgotten()
                    : situation_.say("The journal " + path + " could not be written: " + problem + ".");
    if (onChange) onChange();
}

Verdict MainPresenter::conclude(const Outcome& outcome) {
    auto verdict = updater_.conclude(outcome);
    if (updater_.portList().look()) situation_.hasPorts(!updater_.portList().rows().empty());
    situation_.conclude(outcome, verdict);
    if (onChange) onChange();
    return verdict;
}

MainPresenter::Closing MainPresenter::close(bool isQuestionOpen) {
    if (!isBusy()) return Closing::now;
    closes_ = true;
    if (!isCancellable() && !isQuestionOpen) {
        situation_.say("The window closes when the update has finished.");
        return Closing::waits;
    }
    cmdCancel_Click();
    return Closing::cancels;
}

bool MainPresenter::closesAfter(const Outcome& outcome) {
    const bool isWanted = std::exchange(closes_, false);
    switch (outcome.end) {
        case RunEnd::updated:
        case RunEnd::cancelled:
        case RunEnd::declined:
        case RunEnd::imageRefused:
            return isWanted;
        default:
            return false;
    }
}

bool MainPresenter::closesAfterFetching() { return std::exchange(closes_, false); }

void MainPresenter::lookAtPorts() {
    auto& list = updater_.portList();
    const auto before = list.rows().size();
    if (isBusy() || !list.look()) return;
    situation_.hasPorts(!list.rows().empty());
    if (list.rows().size() > before) situation_.changed();
    if (onChange) onChange();
}

void MainPresenter::cmdCancel_Click() {
    if (updater_.references().isFetching()) return updater_.references().cancel();
    updater_.series().end();
    updater_.run().cancel();
}

References::Opened MainPresenter::openLink(int index) {
    if (isBusy()) return {};
    updater_.references().onFetching = [this] {
        if (onChange) onChange();
    };
    return updater_.references().open(updater_.run().linkTarget(index));
}

std::string MainPresenter::saveFetched(const std::string& file, const std::string& target) const {
    std::error_code error;
    std::filesystem::copy_file(file, target, std::filesystem::copy_options::overwrite_existing, error);
    return error ? target + ": " + error.message() : std::string();
}

void MainPresenter::account(const std::string& server, const std::string& userName, const std::string& password) {
    updater_.choices.server = server;
    updater_.choices.userName = userName;
    updater_.choices.password = password;
    changed();
}

/// Start needs an image: without a local one the Download folder's (or the site's) must be selected.
Controls MainPresenter::controls() const {
    const auto& choices = updater_.choices;
    Controls controls;
    controls.choices = !isBusy();
    controls.start = !isBusy() && !(choices.useFile && choices.image.isNone());
    controls.cancel = isCancellable();
    controls.localFile = !isBusy() && choices.offLine;
    return controls;
}

}  // namespace corvane
