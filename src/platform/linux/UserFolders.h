#pragma once

#include <string>

namespace corvane {

/// Where this user keeps configuration and data, without a separator at the end: $XDG_CONFIG_HOME and $XDG_DATA_HOME
/// when they are absolute, else ~/.config and ~/.local/share.
std::string userConfigFolder();
std::string userDataFolder();

}  // namespace corvane
