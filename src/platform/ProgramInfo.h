#pragma once

#include <string>

namespace corvane {

/// The program's title, which is also its name in the settings store.
inline constexpr char kProgramTitle[] = "Corvane";

/// "V", major, ".", minor, "R", revision.
std::string programVersion();

/// The FTP host that a new installation asks.
std::string defaultServer();

/// Where the account for it comes from, a sentence for people; UTF-8.
std::string accountHint();

}  // namespace corvane
