#include "hid/FakeVell.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

TEST(HidLibrary, IsProbedAndGetsOneHandleAndCallback) {
    ControlBench bench;
    EXPECT_EQ(bench.vell.calls, Texts({"create 1209 5", "callback"}));
    EXPECT_EQ(bench.control->NumberOfCommPorts(), 1);
    EXPECT_EQ(bench.control->EnumCommPort(0), "HID1");
    EXPECT_EQ(bench.control->EnumCommPortEx(0), "HID1 Kestrel");
    EXPECT_EQ(bench.vell.calls.size(), 2u);
    EXPECT_EQ(bench.loader.references(FakeVell::kPath), 1);
    EXPECT_EQ(bench.control->CommID(), 77);
}

TEST(HidLibrary, TakesTheIdentifiersFromThePropertyBag) {
    ControlBench bench(false);
    bench.start(true, {{"DefaultVendorID", 0x0ABC}, {"DefaultProductID", -1}});
    EXPECT_EQ(bench.vell.calls, Texts({"create ABC -1", "callback"}));
    VellIO::PropertyBag saved;
    bench.control->WriteProperties(saved);
    EXPECT_EQ(saved, (VellIO::PropertyBag{{"DefaultProductID", -1}, {"DefaultVendorID", 0x0ABC}}));
}

/// What every member gives when there is no handle.
void expectEmpty(VellIO& control) {
    Bytes bytes(64);
    std::int32_t a = 8, b = 9;
    EXPECT_EQ(control.NumberOfCommPorts(), 0);
    EXPECT_EQ(control.EnumCommPort(0), "");
    EXPECT_EQ(control.EnumCommPortEx(0), "");
    EXPECT_EQ(control.DevicePrefix(), "");
    control.DevicePrefix("X");
    EXPECT_FALSE(control.AddNewUSBID(1, 2) || control.DeviceIsUSBID("HID1", 1, 2) || control.GetDeviceUSBID("", a, b));
    EXPECT_EQ(control.GetDeviceManufacturer("HID1") + control.GetDeviceProduct("HID1") +
                  control.GetDeviceSerialNumber("HID1") + control.GetIndexedString(1),
              "");
    EXPECT_FALSE(control.CheckDevicesIsChanged(true) || control.IsHIDIOReady() || control.FlushQueue());
    EXPECT_FALSE(control.GetInputReport(bytes) || control.SetOutputReport(bytes) || control.GetFeature(bytes) ||
                 control.SetFeature(bytes) || control.GetNumberInputBuffers(a) || control.SetNumberInputBuffers(9));
    control.CommPort("HID1");
    control.PortOpen(true);
    EXPECT_FALSE(control.PortOpen());
    EXPECT_NE(control.openFailure(), "");
    EXPECT_EQ(control.CommID() + control.InBufferCount() + control.InBufferSize() + control.OutBufferCount() +
                  control.OutBufferSize() + control.ScanTiming(),
              0);
    EXPECT_FALSE(control.Break() || control.CTSHolding() || control.AsyncIO());
    control.Break(true);
    control.InBufferCount(0);
    control.OutBufferCount(0);
    control.CommOutput(Bytes{1});
    EXPECT_EQ(control.CommInput(), Variant(Bytes()));
    control.InputMode(0);
    EXPECT_EQ(control.CommInput(), Variant(std::string()));
    EXPECT_FALSE(control.SendHIDCMD(4, {}, bytes) || control.IsSendHIDCmdNAK());
    EXPECT_EQ(control.GetHIDVersion(), "");
    control.Terminate();
    EXPECT_EQ(a, 8);
}

TEST(HidLibrary, WithoutItEveryMemberIsEmpty) {
    fakes::FakeRuntime runtime;
    fakes::FakeModuleLoader loader;
    VellIO control(runtime, loader, FakeVell::kPath);
    control.ReadProperties(true, {});
    for (const char* name : {"vellCreate", "vellFlushQueue"}) EXPECT_FALSE(control.IsFunctionSupported(name));
    expectEmpty(control);
}

TEST(HidLibrary, IsNotTouchedAtDesignTime) {
    ControlBench bench(false);
    EXPECT_FALSE(bench.control->IsFunctionSupported("vellCreate"));
    expectEmpty(*bench.control);
    EXPECT_EQ(bench.vell.calls, Texts());
}

TEST(HidLibrary, AFailedHandleIsTriedAgainWhenItIsNeeded) {
    ControlBench bench(false);
    bench.vell.createWorks = false;
    bench.start(true);
    expectEmpty(*bench.control);
    EXPECT_EQ(bench.vell.calls.size(), 5u);  // at the start, three enumerations, one opening
    bench.vell.createWorks = true;
    EXPECT_EQ(bench.control->NumberOfCommPorts(), 1);
    EXPECT_EQ(bench.vell.calls.back(), "callback");
}

TEST(HidLibrary, AnOlderOneLacksTheOptionalOperations) {
    ControlBench bench(true, {"vellAddNewUSBID", "vellGetDeviceUSBID", "vellFlushQueue", "vellCheckDevicesIsChanged",
                              "vellService", "vellDispatch"});
    auto& control = *bench.control;
    std::int32_t a = 0, b = 0;
    EXPECT_FALSE(control.AddNewUSBID(1, 2) || control.DeviceIsUSBID("HID1", 0x1209, 5));
    EXPECT_FALSE(control.GetDeviceUSBID("HID1", a, b) || control.FlushQueue() || control.CheckDevicesIsChanged(true));
    EXPECT_EQ(control.GetDeviceProduct("HID1"), "");
    EXPECT_FALSE(control.IsHIDIOReady());
    bench.open();
    EXPECT_TRUE(control.IsHIDIOReady());
    EXPECT_EQ(control.NumberOfCommPorts(), 1);
}

TEST(HidLibrary, AQuestionForAFunctionIsReleasedOnce) {
    ControlBench bench;
    EXPECT_TRUE(bench.control->IsFunctionSupported("vellFlushQueue"));
    EXPECT_FALSE(bench.control->IsFunctionSupported("vellNoSuchThing"));
    EXPECT_EQ(bench.loader.references(FakeVell::kPath), 1);
}

TEST(HidLibrary, TerminateClosesInOrder) {
    ControlBench bench;
    bench.open();
    bench.control->RTSEnable(true);
    bench.vell.reply({6, 0});
    bench.control->Terminate();
    EXPECT_EQ(bench.vell.calls, Texts({"break 0", "close", "destroy 77"}));
    EXPECT_EQ(bench.vell.commands.size(), 1u);
    EXPECT_FALSE(bench.control->RTSEnable());
    EXPECT_EQ(bench.control->CommID(), 0);
    bench.control->Terminate();
    EXPECT_EQ(bench.vell.calls.size(), 3u);
}

TEST(HidLibrary, ADestructorTellsTheReaderNothing) {
    ControlBench bench;
    bench.open();
    const auto before = bench.runtime.ms();
    bench.control.reset();
    EXPECT_EQ(bench.vell.calls, Texts({"destroy 77"}));
    EXPECT_EQ(bench.vell.commands, Texts());
    EXPECT_EQ(bench.runtime.ms(), before);
}

TEST(HidLibrary, ReportsItsTextsAndChecks) {
    ControlBench bench;
    std::int32_t vendor = 0, product = 0;
    EXPECT_TRUE(bench.control->GetDeviceUSBID("HID1", vendor, product));
    EXPECT_EQ(vendor, 0x1209);
    EXPECT_EQ(product, 5);
    EXPECT_EQ(bench.control->GetDeviceProduct("HID1"), "Kestrel");
    bench.control->DevicePrefix("USB");
    EXPECT_EQ(bench.control->DevicePrefix(), "USB");
    EXPECT_TRUE(bench.control->IsHIDIOReady());
    EXPECT_TRUE(bench.control->FlushQueue());
    std::int32_t width = 10, height = 20;
    bench.control->Resize(width, height);
    EXPECT_EQ(width, 480);
    EXPECT_EQ(height, 480);
}

struct Dispatch {
    std::int32_t code;
    std::int32_t commEvent;  // 0: no OnComm
    const char* device;      // "": no OnDevice
};

TEST(HidEvents, EachCodeHasItsAction) {
    const Dispatch table[] = {
        {0, 2, ""},
        {1, 1008, ""},
        {2, 1, ""},
        {3, 1010, ""},
        {4, 0, ""},
        {5, 0, ""},
        {6, 0, ""},
        {7, 0, ""},
        {8, 0, "2 HID3 text"},
        {9, 0, "2 HID3 text"},
        {10, 0, ""},
        {15, 0, ""},
        {16, 0, "1 HID3 text"},
        {17, 0, "0 HID3 text"},
        {18, 0, "2 HID3 text"},
        {19, 0, ""},
        {34, 0, ""},
        {35, 3, ""},
        {36, 0, ""},
        {-1, 0, ""},
    };
    ControlBench bench;
    auto& control = *bench.control;
    int comms = 0;
    Texts devices, raw;
    control.OnComm = [&] { ++comms; };
    control.OnDevice = [&](std::int32_t event, const std::string& name, const std::string& text) {
        devices.push_back(std::to_string(event) + " " + name + " " + text);
    };
    control.OnVellProc = [&](std::int32_t code, std::int32_t parameter) {
        EXPECT_EQ(comms + static_cast<int>(devices.size()), 0) << "the raw event comes first";
        raw.push_back(std::to_string(code) + " " + std::to_string(parameter));
    };
    for (const auto& row : table) {
        comms = 0;
        devices.clear();
        raw.clear();
        EXPECT_EQ(bench.vell.raise(row.code, 2, "text"), 0);
        EXPECT_EQ(raw, Texts({std::to_string(row.code) + " 2"}));
        EXPECT_EQ(comms, row.commEvent ? 1 : 0) << row.code;
        if (row.commEvent) {
            EXPECT_EQ(control.CommEvent(), row.commEvent);
        }
        EXPECT_EQ(devices, *row.device ? Texts({row.device}) : Texts()) << row.code;
    }
}

TEST(HidEvents, TheTextOfARemovedDeviceIsAskedForOfTheOwnHandle) {
    ControlBench bench;
    Texts texts;
    bench.control->OnDevice = [&](std::int32_t, const std::string&, const std::string& text) { texts.push_back(text); };
    bench.vell.raise(0, 0, "gone");
    for (const std::int32_t code : {8, 9, 16, 18, 17}) bench.control->VellIOProc(5, code, 0);
    EXPECT_EQ(texts, Texts({"gone of 5", "gone of 5", "gone of 5", "gone of 5", "gone"}));
}

TEST(HidEvents, ANewDeviceIsLatchedUntilItIsRead) {
    ControlBench bench;
    EXPECT_FALSE(bench.control->IsNewDevicePlugin());
    EXPECT_TRUE(bench.control->CheckDevicesIsChanged(true));
    bench.vell.raise(17);
    EXPECT_TRUE(bench.control->IsNewDevicePlugin());
    EXPECT_FALSE(bench.control->IsNewDevicePlugin());
}

TEST(HidEvents, DuringAnExchangeControlNoticesAreKeptBack) {
    ControlBench bench;
    bench.open();
    Texts raw;
    int comms = 0;
    bench.control->OnComm = [&] { ++comms; };
    bench.control->OnVellProc = [&](std::int32_t code, std::int32_t) { raw.push_back(std::to_string(code)); };
    bench.runtime.at(bench.runtime.ms() + 10, [&] {
        for (std::int32_t code = 0; code < 9; ++code) bench.vell.raise(code);
    });
    Bytes results;
    bench.control->SendHIDCMD(9, {}, results);
    EXPECT_EQ(raw, Texts({"0", "1", "2", "3", "8"}));
    EXPECT_EQ(comms, 4);
    bench.vell.raise(4);
    EXPECT_EQ(raw.back(), "4");
}

TEST(HidEvents, AHandlerThatThrowsDoesNotDoSoThroughTheLibrary) {
    ControlBench bench;
    bench.control->OnDevice = [](std::int32_t, const std::string&, const std::string&) {
        throw std::runtime_error("a handler failed");
    };
    EXPECT_THROW(bench.control->CheckDevicesIsChanged(true), std::runtime_error);
    bench.vell.raise(16);
    EXPECT_THROW(bench.runtime.DoEvents(), std::runtime_error);
    bench.runtime.DoEvents();
}

}  // namespace
}  // namespace corvane
