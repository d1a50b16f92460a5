#include "site/SelfUpdate.h"

#include "platform/ProgramInfo.h"
#include "platform/files/Files.h"
#include "text/Cp1252.h"
#include "text/Text.h"

namespace corvane {

bool SelfUpdate::CheckNewVersion() {
    failure_ = {};
    const auto* offer = reader_.information();
    if (!offer) return false;
    const auto offered = offer->value("Corvane", "Version");
    // Texts are compared by their characters' codes, not as numbers: whoever runs a site counts on just that.
    if (offered <= programVersion()) return false;
    if (offer->voucher() && !offer->hasDigest("Corvane")) {
        failure_ = {SiteFailure::Kind::wrongContent, "the signed list gives no SHA256 for it"};
        return false;
    }
    const auto remote = offer->value("Corvane", "File", "firmware/utility/corvane.exe");
    if (!prompts_.messageBox(Question::newerProgram,
                             "The Corvane is out of date.\r\nDo you want to download and update it?\r\n\r\nThis is " +
                                 programVersion() + ". The site offers " + offered + ": " + remote + ".")) {
        return false;
    }
    makeFolder(folder_.resolve("\\download"));
    path_ = folder_.resolve("\\download\\Corvane.exe");
    const auto digest = lowerCase(offer->value("Corvane", "SHA256"));
    const auto check = [&](const std::string& fetched, const std::string&) { return faultOf(fetched, digest); };
    if (site_.FTP_Download(remote, path_,
                           {.mostBytes = SiteAccess::kMostProgramBytes, .check = check, .keepsOld = true}))
        return true;
    failure_ = site_.failure();
    return false;
}

std::string SelfUpdate::faultOf(const std::string& program, const std::string& digest) {
    if (auto fault = launcher_.fault(program); !fault.empty()) return fault;
    found_ = digest_.sha256(readFile(program));
    if (digest.empty() || found_ == digest) return {};
    return "its SHA-256 is " + found_ + ", but firmware.inf says " + toUtf8(digest);
}

}  // namespace corvane
