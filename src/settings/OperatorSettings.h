#pragma once

#include "platform/SettingsStore.h"
#include "settings/Choices.h"

namespace corvane {

/// The operator's account, server and mode between two starts of the program.
void loadSettings(SettingsStore& store, Choices& choices);

/// False when something could not be written.
bool saveSettings(SettingsStore& store, const Choices& choices);

}  // namespace corvane
