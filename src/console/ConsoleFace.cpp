#include "console/ConsoleFace.h"

#include <utility>

#include "console/TerminalText.h"
#include "face/FirmwareDialog.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {
namespace {

std::string asLines(const std::string& text1252) { return replaceAll(toUtf8(text1252), "\r\n", "\n"); }

}  // namespace

ConsoleFace::ConsoleFace(const Arguments& arguments, LogPrinter& printer, TextSink& err, Terminal& terminal,
                         std::optional<std::string> devicePassword)
    : arguments_(arguments),
      printer_(printer),
      err_(err),
      terminal_(terminal),
      devicePassword_(std::move(devicePassword)) {}

void ConsoleFace::say(const std::string& utf8) {
    endProgressLine();
    writeHarmless(err_, "corvane-cli: " + utf8 + "\n");
}

void ConsoleFace::ShowInfo(std::string_view text) {
    endProgressLine();
    printer_.text(text);
}

void ConsoleFace::clear() {
    endProgressLine();
    printer_.clear();
}

/// The percentage stands behind whatever line the log has begun, and the cursor before it.
void ConsoleFace::endProgressLine() {
    if (shownPercent_ >= 0) err_.write("\033[K");
    shownPercent_ = -1;
}

void ConsoleFace::progress(std::int64_t value, std::int64_t maximum) {
    printer_.progress(value, maximum);
    if (!err_.isTerminal()) return;
    const int percent = maximum > 0 ? static_cast<int>(value * 100 / maximum) : 0;
    if (percent == 0) return endProgressLine();
    if (percent == shownPercent_) return;
    shownPercent_ = percent;
    err_.write("\0337 " + std::to_string(percent) + " %\033[K\0338");
}

void ConsoleFace::phase(RunPhase phase) {
    if (phase != RunPhase::removal && phase != RunPhase::nextDevice) return;
    const bool isRemoval = phase == RunPhase::removal;
    printer_.waiting(isRemoval ? "removal" : "device");
    say(isRemoval ? "Take the device off and connect the next one; an interrupt (Ctrl-C) ends the series."
                  : "Waiting for the next device.");
}

void ConsoleFace::showPorts(const std::vector<std::string>& names) {
    if (!beforeScan) return;
    for (const auto& line : beforeScan(names)) say(line);
}

void ConsoleFace::portRefused(const std::string& port) {
    const auto reason = refusalReason ? refusalReason(port) : std::string();
    if (!reason.empty()) say(reason);
}

std::optional<std::string> ConsoleFace::ask(const std::string& question, bool echo) {
    if (!terminal_.isThere() || abandoned_) return std::nullopt;
    endProgressLine();
    writeHarmless(err_, question);
    return terminal_.readLine(echo, [this] { return abandoned_; });
}

std::string ConsoleFace::inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) {
    if (devicePassword_) {
        isDevicePasswordUsed_ = true;
        return fromUtf8(*std::exchange(devicePassword_, std::nullopt));
    }
    if (std::exchange(isDevicePasswordUsed_, false)) {
        say("The device does not take the password that CORVANE_DEVICE_PASSWORD gives.");
        if (!terminal_.isThere()) return {};
    }
    const auto answer = ask(toUtf8(title + ": " + prompt + " [" + byDefault + "] "), false);
    if (!answer) {
        if (!terminal_.isThere()) say("The device wants a password; set CORVANE_DEVICE_PASSWORD.");
        return {};
    }
    return answer->empty() ? byDefault : fromUtf8(*answer);
}

bool ConsoleFace::messageBox(Question question, const std::string& text) {
    if (question == Question::newerProgram) {
        if (!arguments_.selfUpdate) say("A newer program is on the site; --self-update installs it.");
        return arguments_.selfUpdate;
    }
    const bool isHarm = isAboutHarm(question), isUnsound = question == Question::unsoundImage;
    const std::string option = isUnsound ? "--accept-unsound" : "--yes";
    if (isUnsound ? arguments_.acceptUnsound : arguments_.yes) {
        if (isHarm) say(asLines(text) + " Yes, as " + option + " says.");
        return true;
    }
    isAskingAboutHarm_ = isHarm;
    const auto answer = ask(asLines(text) + " [y/N] ", true);
    isAskingAboutHarm_ = false;
    if (!answer && !terminal_.isThere()) {
        if (isHarm) say(asLines(text));
        say("Nobody is there to answer the question; " + option +
            (isHarm ? " installs the image all the same." : " answers it with OK."));
    }
    const auto word = std::string(trimmed(answer.value_or("")));
    return equalsNoCase(word, "y") || equalsNoCase(word, "yes") || equalsNoCase(word, "ok");
}

void ConsoleFace::chooseFirmware(FirmwareDialog& dialog) {
    const int entry = entryFor(dialog);
    dialog.select(entry);
    if (entry < 0 || abandoned_) return;
    if (!arguments_.yes && terminal_.isThere()) {
        writeHarmless(err_, asLines(dialog.header() + dialog.details()) + asLines(dialog.verdict().text) + "\n");
    }
    dialog.ok(*this);
}

/// The entry that the options or the dialog's own preselection name; -1 after saying why there is none.
int ConsoleFace::entryFor(const FirmwareDialog& dialog) {
    const auto& entries = dialog.entries();
    if (arguments_.select) {
        const auto wanted = fromUtf8(*arguments_.select);
        for (const bool exact : {true, false}) {
            for (std::size_t i = 0; i < entries.size(); ++i) {
                const auto& section = entries[i].record.section;
                if (exact ? section == wanted : equalsNoCase(section, wanted)) return static_cast<int>(i);
            }
        }
        say("There is no image \"" + *arguments_.select + "\" for this device.");
        return -1;
    }
    const int selected = dialog.selected();
    const bool isMarked = selected >= 0 && entries[static_cast<std::size_t>(selected)].isMarked();
    if (selected >= 0 && (!isMarked || entries.size() == 1)) return selected;
    say("None of the images is clearly the one for this device; --select names one (corvane-cli images lists them).");
    return -1;
}

}  // namespace corvane
