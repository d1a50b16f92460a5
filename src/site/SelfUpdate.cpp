#include "site/SelfUpdate.h"

#include "platform/Files.h"
#include "platform/ProgramInfo.h"

namespace corvane {

bool SelfUpdate::CheckNewVersion() {
    failure_ = {};
    const auto* offer = reader_.information();
    if (!offer) return false;
    const auto offered = offer->value("Corvane", "Version");
    // Texts are compared by their characters' codes, not as numbers: whoever runs a site counts on just that.
    if (offered <= programVersion()) return false;
    const auto remote = offer->value("Corvane", "File", "firmware/utility/corvane.exe");
    if (!prompts_.messageBox(Question::newerProgram,
                             "The Corvane is out of date.\r\nDo you want to download and update it?\r\n\r\nThis is " +
                                 programVersion() + ". The site offers " + offered + ": " + remote + ".")) {
        return false;
    }
    makeFolder(folder_.resolve("\\download"));
    path_ = folder_.resolve("\\download\\Corvane.exe");
    if (site_.FTP_Download(remote, path_)) return true;
    failure_ = site_.failure();
    return false;
}

}  // namespace corvane
