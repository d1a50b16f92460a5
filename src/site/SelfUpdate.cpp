#include "site/SelfUpdate.h"

#include "platform/Files.h"
#include "platform/ProgramInfo.h"

namespace corvane {

bool SelfUpdate::CheckNewVersion() {
    failure_.reset();
    const auto information = folder_.resolve("\\firmware.inf");
    const auto offered = reader_.ReadInfValue("Corvane", "Version", "", information);
    // Texts are compared by their characters' codes, not as numbers: whoever runs a site counts on just that.
    if (offered <= programVersion()) return false;
    if (!prompts_.messageBox(Question::newerProgram,
                             "The Corvane is out of date.\r\nDo you want to download and update it?")) {
        return false;
    }
    const auto remote = reader_.ReadInfValue("Corvane", "File", "firmware/utility/corvane.exe", information);
    makeFolder(folder_.resolve("\\download"));
    path_ = folder_.resolve("\\download\\Corvane.exe");
    if (!site_.isConnected()) {
        failure_ = "the session with the site was closed";
        return false;
    }
    if (site_.FTP_Download(remote, path_)) return true;
    failure_ = site_.problem();
    return false;
}

}  // namespace corvane
