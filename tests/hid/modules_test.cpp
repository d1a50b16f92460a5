#include <cstdlib>
#include <gtest/gtest.h>

#include "hid/VellIO.h"
#include "platform/linux/DlModuleLoader.h"
#include "support/FakeRuntime.h"

namespace corvane {
namespace {

/// The control on a shared object of the file system.
struct Loaded {
    explicit Loaded(const std::string& path) : control(runtime, loader, path) { control.ReadProperties(true, {}); }

    fakes::FakeRuntime runtime;
    DlModuleLoader loader;
    VellIO control;
};

std::string variant(const std::string& name) { return CORVANE_TEST_MODULES "/" + name + "/VellIO.so"; }

TEST(HidModules, WhatIsNoLibraryCountsAsNone) {
    for (const char* name : {"text", "missing"}) {
        Loaded loaded(variant(name));
        EXPECT_EQ(loaded.control.NumberOfCommPorts(), 0) << name;
        EXPECT_EQ(loaded.control.EnumCommPort(0), "");
        EXPECT_FALSE(loaded.control.IsFunctionSupported("vellCreate"));
        EXPECT_FALSE(loaded.control.IsMyCommPort("HID1"));
        EXPECT_NE(loaded.control.libraryProblem().find("VellIO.so"), std::string::npos);
        loaded.control.PortOpen(true);
        EXPECT_FALSE(loaded.control.PortOpen());
        EXPECT_EQ(loaded.control.openFailure(), loaded.control.libraryProblem());
        loaded.control.Terminate();
    }
}

TEST(HidModules, AnOlderOneWorksAsFarAsItGoes) {
    Loaded loaded(variant("older"));
    auto& control = loaded.control;
    EXPECT_EQ(control.NumberOfCommPorts(), 1);
    EXPECT_EQ(control.EnumCommPortEx(0), "HID1 Old");
    EXPECT_TRUE(control.IsMyCommPort("HID1"));
    EXPECT_FALSE(control.IsFunctionSupported("vellFlushQueue"));
    EXPECT_FALSE(control.CheckDevicesIsChanged(true));
    EXPECT_EQ(control.GetDeviceProduct("HID1"), "");
    control.CommPort("HID1");
    control.PortOpen(true);  // it has no such operation
    EXPECT_FALSE(control.PortOpen());
    loaded.runtime.DoEvents();
    control.Terminate();
}

TEST(HidModules, AHandleThatFailsIsNoHandle) {
    Loaded loaded(variant("nohandle"));
    EXPECT_EQ(loaded.control.NumberOfCommPorts(), 0);
    EXPECT_TRUE(loaded.control.IsFunctionSupported("vellCheckDevicesIsChanged"));
    EXPECT_FALSE(loaded.control.CheckDevicesIsChanged(true));
    EXPECT_FALSE(loaded.control.IsHIDIOReady());
    loaded.control.Terminate();
}

TEST(HidModules, TheOwnOnesAreWhole) {
    unsetenv("CORVANE_BENCH_SOCKET");
    for (const std::string path : {CORVANE_BIN_DIR "/VellIO.so", CORVANE_BIN_DIR "/bench/VellIO.so"}) {
        Loaded loaded(path);
        for (const char* name : {"vellAddNewUSBID", "vellGetDeviceUSBID", "vellFlushQueue", "vellWriteCtrlPtr",
                                 "vellCheckDevicesIsChanged", "vellService", "vellDispatch", "vellGetEvent"}) {
            EXPECT_TRUE(loaded.control.IsFunctionSupported(name)) << path << " " << name;
        }
        EXPECT_NE(loaded.control.CommID(), 0) << path;
        EXPECT_EQ(loaded.control.DevicePrefix(), "HID");
        EXPECT_EQ(loaded.control.libraryProblem(), "");
        loaded.control.Terminate();
        EXPECT_EQ(loaded.control.CommID(), 0);
    }
}

}  // namespace
}  // namespace corvane
