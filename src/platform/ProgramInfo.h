#pragma once

#include <string>

namespace corvane {

/// The program's title, which is also its name in the settings store.
inline constexpr char kProgramTitle[] = "Corvane";

/// "V", major, ".", minor, "R", revision.
std::string programVersion();

/// The FTP host that a new installation asks.
std::string defaultServer();

/// The public key of the maker whose program this is, as the second line of its file; empty for none.
std::string makerKey();

/// Where the account for it comes from, a sentence for people; UTF-8.
std::string accountHint();

}  // namespace corvane
