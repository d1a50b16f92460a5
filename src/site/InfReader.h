#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/files/ProgramFolder.h"
#include "site/ListTrust.h"
#include "site/SiteInformation.h"

namespace corvane {

/// Reads profile values, and keeps firmware.inf taken apart for as long as a run asks for it. It does not own the
/// folder, nor what says whom to believe; without that every list is believed.
class InfReader {
public:
    explicit InfReader(const ProgramFolder& folder, ListTrust* trust = nullptr) : folder_(folder), trust_(trust) {}

    /// The value in a file, which is read for this; an empty file means the program's own profile.
    std::string ReadInfValue(std::string_view section, std::string_view key, std::string_view byDefault,
                             const std::string& file = {}) const;

    /// Where firmware.inf lies, in the system's bytes.
    std::string informationPath() const { return folder_.resolve("\\firmware.inf"); }

    /// firmware.inf of the program's folder, read when it is first asked for; null when there is none, or none that is
    /// to be believed. It stays what it was until it is forgotten.
    const SiteInformation* information();

    /// Why the one that lies there is not to be believed, a part of a sentence in UTF-8; empty when it is, or when
    /// nobody has asked for it yet.
    const std::string& distrust() const { return distrust_; }

    /// Whom lists have to be signed by; null when by nobody.
    ListTrust* trust() const { return trust_ && trust_->isAsked() ? trust_ : nullptr; }

    /// From here on this content, which is to become firmware.inf, counts.
    void take(std::string content, std::optional<Voucher> voucher);

    /// A new run begins.
    void forget();

private:
    void load();

    const ProgramFolder& folder_;
    ListTrust* trust_;
    std::string distrust_;
    std::optional<SiteInformation> information_;
};

}  // namespace corvane
