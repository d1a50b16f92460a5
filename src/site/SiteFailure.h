#pragma once

#include <string>

namespace corvane {

/// Why the site did not give what was wanted. The words are a part of a sentence, for people, in UTF-8.
struct SiteFailure {
    enum class Kind {
        none,
        cancelled,       ///< by the operator
        noServer,        ///< what stands for the server's name can be none, or the account cannot be sent
        unreachable,     ///< the server is not there, or no way leads to it
        loginRefused,    ///< user name or password
        notEncrypted,    ///< encryption is required, and the server or its certificate does not give it
        listingRefused,  ///< the login was accepted, and then the server gave no listing
        brokenOff,       ///< the dialogue or the transfer began and did not come to its end
        notGiven,        ///< the server does not give the file
        unusableName,    ///< the site's name for the file names a folder, or nothing that may be written here
        oldFileStays,    ///< what lies where the file belongs cannot be replaced
        notStored,       ///< the disk did not take the file
        tooLong,         ///< it has more bytes than its kind of file may have
        wrongContent,    ///< the file is not the one that the site announces
        notBelieved,     ///< firmware.inf is signed by nobody who is trusted here
        notDownloaded,   ///< off line: it does not lie in the Download folder
        noSession,       ///< nobody is logged in
        sessionClosed,   ///< by the idle watch
    };
    Kind kind = Kind::none;
    std::string words{};

    explicit operator bool() const { return kind != Kind::none; }
};

}  // namespace corvane
