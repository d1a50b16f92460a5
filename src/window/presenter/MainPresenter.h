#pragma once

#include <functional>
#include <optional>

#include "app/Updater.h"
#include "image/MemoryMap.h"
#include "settings/StoredSettings.h"
#include "window/presenter/Situation.h"

namespace corvane {

/// Which controls of the main window can be used.
struct Controls {
    bool start = true;       ///< cmdStartCheck and cmdForceISP
    bool cancel = false;     ///< cmdCancel
    bool choices = true;     ///< account, server, mode, options
    bool localFile = false;  ///< the group with optLast, optFile and cmdLoadFile
};

/// What a click on the main window does, without the window: the choices, what is enabled when, loading and saving.
/// It does not own the updater.
class MainPresenter {
public:
    explicit MainPresenter(Updater& updater) : updater_(updater), situation_(updater) {}

    /// Called whenever something that the window shows may have changed.
    std::function<void()> onChange;

    /// Asks for a local image: its path, or nothing when the operator gave up.
    std::function<std::optional<std::string>()> pickFile;

    /// Reads the stored settings.
    void load();

    /// Ends the program's session: saves the settings, closes the ports, leaves the site. False when the settings could
    /// not be written.
    bool unload();

    void optLine_Click(bool offLine);
    void optFile_Click();

    /// The arrow keys went to optFile: it is selected, and asks for no file yet.
    void optFile_Walked();
    void optLast_Click();
    void cmdLoadFile_Click();
    void cmdCancel_Click();
    void cmdComport_Click(int index) { updater_.run().jumpToPort(index); }

    /// Runs an update, with a local file as it is now.
    Outcome start(bool force);

    /// After a device the next one: set, or taken back at any moment.
    void chkSeries_Click(bool isWanted);

    /// Behind a run: waits for the next device if one is wanted. True when it is there, to be started in the same way.
    [[nodiscard]] bool waitForNext(const Outcome& outcome);

    /// Before a forced run: the image that a rescue installs becomes the chosen local file.
    void takeRescueImage();

    /// The operator says that a device which was left is well, or will never be: it is not named any more.
    void forget(const InterruptedRun& run);

    /// What follows a run: it is recorded, and the situation says how it ended.
    Verdict conclude(const Outcome& outcome);

    /// What a wish to close the window leads to.
    enum class Closing {
        now,
        cancels,  ///< the run ends first, without harm
        waits,    ///< a device is being programmed
    };
    Closing close(bool isQuestionOpen);

    /// Whether the window that was asked to close does so after a run that ended like this. What needs somebody's eyes
    /// keeps it open.
    bool closesAfter(const Outcome& outcome);

    /// The same for the fetching of a reference.
    bool closesAfterFetching();

    Situation& situation() { return situation_; }

    /// Looks whether ports or readers have come or gone.
    void lookAtPorts();

    /// A run is on, a device is waited for, or a reference is fetched.
    bool isBusy() const { return updater_.run().isRunning() || isWaiting() || updater_.references().isFetching(); }

    /// Between two devices of a series.
    bool isWaiting() const { return updater_.series().isWaiting(); }

    /// Takes an image as if it had been picked, and remembers it as a recent one; False when it is none.
    bool loadFile(const std::string& path);

    /// A file was dropped: when it is an image it is what is to be installed, off line; else nothing changes.
    void dropFile(const std::string& path);

    /// A reader came or went, as that text says.
    void readerChanged(const std::string& text, bool isPluggedIn);

    /// The local images that were taken last.
    std::vector<std::string> recentFiles() const { return stored().recentFiles(); }

    /// The memory that the local image fills; nothing when none is loaded.
    std::optional<MemoryMap> localMap() const { return memoryMapOf(updater_.choices.image); }

    /// The step from a device's version to the local image's, as far as both are known, or why there is no such image
    /// yet. Windows-1252.
    std::string localStep(const std::string& deviceVersion) const;

    /// Opens a reference link of the last run; does nothing when it leads nowhere, or something else is going on.
    References::Opened openLink(int index);

    /// Copies a fetched file to where the operator wants it: why that did not work, or an empty text. UTF-8.
    std::string saveFetched(const std::string& file, const std::string& target) const;

    const Choices& choices() const { return updater_.choices; }
    void account(const std::string& server, const std::string& userName, const std::string& password);
    Controls controls() const;

private:
    bool isCancellable() const {
        return updater_.run().isCancellable() || isWaiting() || updater_.references().isFetching();
    }
    StoredSettings stored() const { return StoredSettings(updater_.platform().settings); }
    void selectLast();
    void changed() {
        situation_.changed();
        if (onChange) onChange();
    }

    Updater& updater_;
    Situation situation_;
    Choices loaded_;  // the settings as they were read
    bool loading_ = false;
    bool wantsSeries_ = false;
    bool isInSeries_ = false;  // the run at hand, or the next one, is not its first
    bool closes_ = false;
};

}  // namespace corvane
