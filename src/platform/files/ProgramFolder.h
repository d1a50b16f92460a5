#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// The variable of the environment that names another HID transport library than the program's own.
inline constexpr char kHidLibraryVariable[] = "CORVANE_VELLIO";

/// The folder that holds the program's files: firmware.inf, the Download folder, the profile file.
class ProgramFolder {
public:
    virtual ~ProgramFolder() = default;

    /// The folder itself, without a separator at its end, in the system's bytes.
    virtual std::string path() const = 0;

    /// Where this user's records are kept, in the system's bytes; it need not exist yet.
    virtual std::string dataPath() const = 0;

    /// A new empty folder of a name that nobody can guess, which only this user can look into; empty when none can be
    /// made. It stays when the program ends, and is cleared away once another program asks for one.
    virtual std::string privateFolder() const = 0;

    /// "\Download\x.hex" below the folder: "\" and "/" both separate, and each part matches an existing entry without
    /// regard to case (the exact one first, else the first in the order of bytes). Parts that do not exist stay as they
    /// are given; empty ones, "." and ".." are dropped, so that nothing outside is ever meant.
    virtual std::string resolve(std::string_view given) const;
};

}  // namespace corvane
