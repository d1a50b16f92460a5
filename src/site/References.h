#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/Launcher.h"
#include "site/SiteAccess.h"

namespace corvane {

/// What a reference of firmware.inf (LinkURL) leads to.
enum class ReferenceKind {
    none,  ///< nothing that may be opened: shown as text
    web,   ///< an http or https address, opened as it is
    file,  ///< a file of the site, by its path there
};
ReferenceKind referenceKind(std::string_view target);

/// Whether a file may be handed to the desktop to be shown: its name says that it is a text, a page, a PDF or a
/// picture, and what it begins with says no other. Everything else might be run.
bool isShowable(std::string_view name, std::string_view content);

/// Opens the references of a site. A file is fetched by the program's own session into a folder that only this user can
/// look into, so that neither the password nor the choice of the server leaves the program. Owns nothing.
class References {
public:
    References(SiteAccess& site, const Choices& choices, SettingsStore& settings, const ProgramFolder& folder,
               Launcher& launcher)
        : site_(site), choices_(choices), settings_(settings), folder_(folder), launcher_(launcher) {}

    /// The fetching of a file begins, or has ended.
    std::function<void()> onFetching;

    /// What has become of one: shown when both texts are empty.
    struct Opened {
        std::string problem{};  ///< why it could not be opened, in UTF-8
        std::string file{};     ///< where it lies, when the desktop had better not open it: to be saved elsewhere
    };

    /// The target is as firmware.inf has it. Logs in when there is no session, off line, too; events run meanwhile.
    Opened open(const std::string& target);

    /// Ends the fetching.
    void cancel() { site_.cancel(); }
    bool isFetching() const { return isFetching_; }

private:
    Opened fetch(const std::string& path);
    void setFetching(bool isFetching);

    SiteAccess& site_;
    const Choices& choices_;
    SettingsStore& settings_;
    const ProgramFolder& folder_;
    Launcher& launcher_;
    bool isFetching_ = false;
};

}  // namespace corvane
