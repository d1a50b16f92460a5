#pragma once

#include <string>

#include "platform/AsyncReader.h"
#include "platform/Digest.h"
#include "platform/Launcher.h"
#include "platform/ModuleLoader.h"
#include "platform/PortInspector.h"
#include "platform/PortMap.h"
#include "platform/PowerSupply.h"
#include "platform/Processes.h"
#include "platform/Runtime.h"
#include "platform/SerialControl.h"
#include "platform/SettingsStore.h"
#include "platform/SignatureCheck.h"
#include "platform/SleepInhibitor.h"
#include "platform/files/FileStore.h"
#include "platform/files/ProgramFolder.h"

namespace corvane {

/// The system that a program runs on, one of each seam. Whoever made them owns them.
struct Platform {
    Runtime& runtime;
    SerialControl& serial;
    PortMap& ports;
    ModuleLoader& modules;
    AsyncReader& reader;
    SettingsStore& settings;
    ProgramFolder& folder;
    Launcher& launcher;
    Digest& digest;
    PortInspector& inspector;
    SleepInhibitor& inhibitor;
    PowerSupply& power;
    FileStore& files;
    Processes& processes;
    std::string hidLibrary;  ///< path of the HID transport library, which need not exist
    SignatureCheck& signatures;
    KeyPlaces keys{};  ///< none: nothing has to be signed
};

}  // namespace corvane
