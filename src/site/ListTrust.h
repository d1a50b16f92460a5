#pragma once

#include "platform/files/ProgramFolder.h"
#include "site/ListTimes.h"
#include "trust/TrustedKeys.h"

namespace corvane {

/// Whether a firmware.inf may be believed. As long as no key is known on this computer, every one is; from then on
/// those alone that a known key has signed. The signature of the list in the program's folder lies beside it. Owns
/// nothing.
class ListTrust {
public:
    ListTrust(SignatureCheck& check, KeyPlaces places, const ProgramFolder& folder, FileStore& files);

    /// Reads the keys anew.
    void begin();

    /// Whether lists have to be signed.
    bool isAsked() const { return keys_.areThere(); }

    /// Keys that cannot be used, a sentence each; UTF-8.
    const std::vector<std::string>& problems() const { return keys_.problems(); }

    /// The fault of one that is not to be believed is a part of a sentence.
    Judgement judge(std::string_view list, std::string_view signature) const;

    /// The same for a list that has come from a server: older than the last one from there it is refused.
    Judgement judge(std::string_view list, std::string_view signature, const std::string& server) const;

    /// The same for the content of the list in the program's folder.
    Judgement judgeStored(std::string_view list);

    /// Where a signature goes before its list has come. It takes the old one's place once the new list has taken the
    /// old one's: whenever the program is killed, one of both is that of the list.
    std::string incomingPath() const;

    /// Clears the place for one: what lies there may be the list's, after a kill.
    void settle();

    /// The list has taken its place, and its signature follows; the list's time is kept. What went wrong, a sentence;
    /// empty when nothing did.
    [[nodiscard]] std::string keep(const std::string& signature, const Voucher& voucher, const std::string& server);

private:
    std::string storedPath() const;

    SignatureCheck& check_;
    KeyPlaces places_;
    const ProgramFolder& folder_;
    FileStore& files_;
    ListTimes times_;
    TrustedKeys keys_;
};

/// The name of the file and of its signature's, at a site as here.
inline constexpr char kListName[] = "firmware.inf";
inline constexpr char kSignatureName[] = "firmware.inf.minisig";

}  // namespace corvane
