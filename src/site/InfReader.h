#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/files/ProgramFolder.h"
#include "site/SiteInformation.h"

namespace corvane {

/// Reads profile values, and keeps firmware.inf taken apart for as long as a run asks for it. It does not own the
/// folder.
class InfReader {
public:
    explicit InfReader(const ProgramFolder& folder) : folder_(folder) {}

    /// The value in a file, which is read for this; an empty file means the program's own profile.
    std::string ReadInfValue(std::string_view section, std::string_view key, std::string_view byDefault,
                             const std::string& file = {}) const;

    /// Where firmware.inf lies, in the system's bytes.
    std::string informationPath() const { return folder_.resolve("\\firmware.inf"); }

    /// firmware.inf of the program's folder, read when it is first asked for; null when there is none. It stays what it
    /// was until it is forgotten.
    const SiteInformation* information();

    /// Takes another file for it, which is to become firmware.inf; False when that cannot be read.
    [[nodiscard]] bool take(const std::string& path);

    /// A new run begins.
    void forget() { information_.reset(); }

private:
    const ProgramFolder& folder_;
    std::optional<SiteInformation> information_;
};

}  // namespace corvane
