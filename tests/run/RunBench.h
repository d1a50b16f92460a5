#pragma once

#include <gtest/gtest.h>

#include "support/Program.h"

namespace corvane {

using fakes::kImage;

/// A run in virtual time: a device, an image, the whole workflow.
class RunTest : public ::testing::Test, protected fakes::AppBench, protected fakes::Program {
protected:
    RunTest() : fakes::Program(static_cast<fakes::AppBench&>(*this)) {}

    /// The only device that there is, with these faults.
    models::Device& plugOnly(std::initializer_list<std::string_view> faults, models::DeviceOptions options = {}) {
        devices.clear();
        serial.map.entries.clear();
        updater.session().rememberedPort.clear();
        options.faults = faults;
        return plug(std::move(options));
    }

    /// Calls the handler when this text is logged.
    void when(const std::string& logged, const std::function<void()>& handler) {
        face.onText = [=](const std::string& text) {
            if (text == logged) handler();
        };
    }

    models::Device& device() { return *devices.front(); }
    std::string& log() { return face.log; }
    std::string stored(const std::string& name) const { return fakes::ScratchFolder::content(folder.folder.at(name)); }
};

inline const std::string kFound =
    "\fOpen COM1 ... < OK\r\n   Scan by 19200,N,8,1\f[Local Site]\r\nComm Port : COM1\r\nDevice F/W: TARN-R200 "
    "V5.1R23\r\n\r\n";
inline const std::string kOffer =
    "[FTP Site]\r\nProduct   : TARN-R200\r\nVersion   : V5.2R1\r\n\r\n[Update Information]\r\n";
inline const std::string kToIsp = "GoTo ISP Mode (TarnPlus Protocol)... < OK\r\n\r\n[ISP Mode]\r\n";
inline const std::string kErased = "Erase Firmware... < OK\r\n";
inline const std::string kDone = "Programming... < OK\r\nUpdate Finish\r\n";

}  // namespace corvane
