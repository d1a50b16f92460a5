#include "hid/ControlBench.h"
#include "text/RuntimeError.h"

namespace corvane::tests {

TEST(HidLibrary, IsProbedAndGetsOneHandle) {
    ControlBench bench;
    auto& control = *bench.control;
    EXPECT_EQ(control.libraryProblem(), "");
    EXPECT_TRUE(control.IsFunctionSupported("vellFlushQueue") && !control.IsFunctionSupported("vellNoSuchThing"));
    EXPECT_EQ(bench.loader.references(ControlBench::kLibrary), 1);
    const Texts texts = {control.EnumCommPort(0), control.EnumCommPortEx(0), control.GetDeviceManufacturer("HID1"),
                         control.GetDeviceProduct("HID1"), control.GetDeviceSerialNumber("HID1")};
    EXPECT_EQ(texts, Texts({"HID1", "HID1 Kestrel", "Corvane", "Kestrel", "K1"}));
    std::int32_t vendor = 0, product = 0, buffers = 0;
    EXPECT_TRUE(control.GetDeviceUSBID("HID1", vendor, product) && control.DeviceIsUSBID("HID1", 0x1209, 5) &&
                control.AddNewUSBID(1, 2));
    EXPECT_EQ(vendor * 10 + product, 0x1209 * 10 + 5);
    bench.open();
    EXPECT_TRUE(control.IsHIDIOReady() && control.FlushQueue() && control.SetNumberInputBuffers(4) &&
                control.GetNumberInputBuffers(buffers));
    EXPECT_EQ(std::to_string(buffers) + control.GetIndexedString(1), "4Corvane");
    Bytes report(64);
    EXPECT_TRUE(control.GetFeature(report));
    EXPECT_FALSE(control.SetFeature(report) || control.GetInputReport(report));
    std::copy_n("\1\1z", 3, report.begin());
    EXPECT_TRUE(control.SetOutputReport(report));
    EXPECT_EQ(bench.reader.written, Bytes{'z'});
    std::int32_t width = 10, height = 20;
    control.Resize(width, height);
    EXPECT_EQ(width * 1000 + height, 480480);
}

/// What every member gives when there is no handle.
void expectEmpty(VellIO& control) {
    Bytes bytes(64);
    std::int32_t a = 8, b = 9;
    control.DevicePrefix("X");
    control.PortOpen(true);
    EXPECT_NE(control.openFailure(), "");
    EXPECT_EQ(control.openFailure(), control.libraryProblem());
    control.ScanTiming(5);
    control.AsyncIO(true);
    control.Break(true);
    control.InBufferCount(0);
    control.OutBufferCount(0);
    control.CommOutput(Bytes{1});
    const Texts texts = {control.EnumCommPort(0),          control.EnumCommPortEx(0),   control.DevicePrefix(),
                         control.GetDeviceProduct("HID1"), control.GetIndexedString(1), control.GetHIDVersion()};
    EXPECT_EQ(texts, Texts(6));
    const std::vector<std::int32_t> numbers = {
        control.NumberOfCommPorts(), control.CommID(),        control.InBufferCount(), control.InBufferSize(),
        control.OutBufferCount(),    control.OutBufferSize(), control.ScanTiming()};
    EXPECT_EQ(numbers, std::vector<std::int32_t>(7));
    EXPECT_FALSE(control.AddNewUSBID(1, 2) || control.GetDeviceUSBID("", a, b) || control.CheckDevicesIsChanged(true) ||
                 control.IsHIDIOReady() || control.GetFeature(bytes) || control.PortOpen() || control.Break() ||
                 control.CTSHolding() || control.AsyncIO() || control.SendHIDCMD(4, {}, bytes));
    EXPECT_EQ(control.CommInput(), Variant(Bytes()));
}

TEST(HidLibrary, WithoutItOrAtDesignTimeEveryMemberIsEmpty) {
    ControlBench design(false);
    expectEmpty(*design.control);
    EXPECT_EQ(design.loader.references(ControlBench::kLibrary), 0);
    VellIO missing(design.runtime, design.loader, "/no/such/VellIO.so", design.cancel);
    missing.ReadProperties(true, {});
    EXPECT_EQ(missing.libraryProblem(), "/no/such/VellIO.so: cannot open shared object file");
    expectEmpty(missing);
}

TEST(HidLibrary, AFailedHandleIsTriedAgainWhenItIsNeeded) {
    ControlBench bench(false);
    bench.bus.isOutOfOrder(true);
    bench.start(true);
    EXPECT_EQ(bench.control->libraryProblem(), "/opt/corvane/VellIO.so: HID devices cannot be reached");
    expectEmpty(*bench.control);
    EXPECT_TRUE(bench.control->IsFunctionSupported("vellFlushQueue"));
    bench.bus.isOutOfOrder(false);
    bench.open();
}

TEST(HidLibrary, AnOlderOneLacksTheOptionalOperations) {
    ControlBench bench(true, {"vellAddNewUSBID", "vellGetDeviceUSBID", "vellFlushQueue", "vellCheckDevicesIsChanged",
                              "vellService", "vellDispatch", "vellRead"});
    auto& control = *bench.control;
    std::int32_t a = 0, b = 0;
    EXPECT_FALSE(control.AddNewUSBID(1, 2) || control.DeviceIsUSBID("HID1", 0x1209, 5) ||
                 control.GetDeviceUSBID("HID1", a, b) || control.FlushQueue() || control.CheckDevicesIsChanged(true) ||
                 control.IsHIDIOReady());
    EXPECT_EQ(control.GetDeviceProduct("HID1") + control.GetIndexedString(1), "");
    bench.open();
    EXPECT_TRUE(control.IsHIDIOReady());
    bench.reader.say(HidReportId::data, {1});
    EXPECT_EQ(control.CommInput(), Variant(Bytes())) << "an operation that is not there does nothing";
}

TEST(HidLibrary, TerminateClosesInOrderAndADestructorTellsNothing) {
    ControlBench bench;
    bench.open();
    bench.control->RTSEnable(true);
    bench.control->Break(true);
    bench.sent();
    const auto start = bench.runtime.ms();
    bench.reader.reply({6, 0});
    bench.control->Terminate();
    EXPECT_EQ(bench.sent(start), "0 break 00, 0 03 01 07");
    EXPECT_FALSE(bench.control->RTSEnable());
    bench.control->Terminate();
    EXPECT_EQ(bench.control->NumberOfCommPorts(), 0) << "no other handle is made";
    EXPECT_EQ(bench.control->CommID() + bench.bus.openDevices(), 0);
    bench.start(true);
    bench.open();
    const auto before = bench.runtime.ms();
    bench.control.reset();
    EXPECT_EQ(bench.sent(), "");
    EXPECT_EQ(bench.runtime.ms() - before + bench.bus.openDevices(), 0);
}

TEST(HidEvents, EachCodeHasItsAction) {
    const std::map<std::int32_t, const char*> actions{
        {0, "comm 2"},        {1, "comm 1008"},      {2, "comm 1"},      {3, "comm 1010"},      {8, "2 HID3 handle"},
        {9, "2 HID3 handle"}, {16, "1 HID3 handle"}, {17, "0 HID3 own"}, {18, "2 HID3 handle"}, {35, "comm 3"}};
    ControlBench bench(false);
    auto exports = fakes::vellModule();
    const auto lend = [](std::int32_t hVell) { return hVell == 999 ? "handle" : "own"; };
    exports["vellGetParamString"] = reinterpret_cast<void*>(+lend);
    bench.loader.provide(ControlBench::kLibrary, exports);
    bench.start(true);
    auto& control = *bench.control;
    Texts told;
    control.OnComm = [&] { told.push_back("comm " + std::to_string(control.CommEvent())); };
    control.OnDevice = [&](std::int32_t event, const std::string& name, const std::string& text) {
        told.push_back(std::to_string(event) + " " + name + " " + text);
    };
    control.OnVellProc = [&](std::int32_t code, std::int32_t parameter) {
        told.push_back("raw " + std::to_string(code) + " " + std::to_string(parameter));
    };
    for (std::int32_t code = -1; code <= 36; ++code) {
        Texts expected{"raw " + std::to_string(code) + " 2"};
        if (actions.count(code)) expected.push_back(actions.at(code));
        told.clear();
        EXPECT_EQ(VellCallBackProc(999, reinterpret_cast<std::intptr_t>(&control), code, 2), 0);
        EXPECT_EQ(told, expected) << code;
    }
}

TEST(HidEvents, DuringAnExchangeControlNoticesAreKeptBack) {
    ControlBench bench;
    bench.open();
    bench.runtime.DoEvents();
    Texts raw;
    bench.control->OnVellProc = [&](std::int32_t code, std::int32_t) { raw.push_back(std::to_string(code)); };
    bench.runtime.at(bench.runtime.ms() + 10, [&] {
        for (std::int32_t code = 0; code < 9; ++code) bench.control->VellIOProc(bench.control->CommID(), code, 0);
    });
    Bytes results;
    bench.control->SendHIDCMD(9, {}, results);
    EXPECT_EQ(raw, Texts({"0", "1", "2", "3", "8"}));
    bench.control->VellIOProc(bench.control->CommID(), 4, 0);
    EXPECT_EQ(raw.back(), "4");
}

TEST(HidEvents, TellADeviceOnceAndAHandlerDoesNotThrowThroughTheLibrary) {
    ControlBench bench;
    EXPECT_FALSE(bench.control->IsNewDevicePlugin());
    bench.control->OnDevice = [](auto&&...) { throw std::runtime_error("a handler failed"); };
    bench.bus.unplug("/dev/hidraw1");
    EXPECT_THROW(bench.control->CheckDevicesIsChanged(true), std::runtime_error);
    bench.plug("Kestrel", 5);
    bench.control->NumberOfCommPorts();
    EXPECT_THROW(bench.runtime.DoEvents(), std::runtime_error);
    bench.runtime.DoEvents();
    EXPECT_TRUE(bench.control->IsNewDevicePlugin() && !bench.control->IsNewDevicePlugin());
}

TEST(HidPortNames, AreThePrefixAndANumberOrAPathOfTheMakersReader) {
    ControlBench bench;
    for (const char* mine : {"hid1", "HID256", "\\\\?\\hid#vid_1209&pid_0005#7&1", "\\\\?\\HID#VID_1209&PID_0005"}) {
        EXPECT_TRUE(bench.control->IsMyCommPort(mine)) << mine;
    }
    for (const char* other :
         {"HID0", "HID257", "HID1x", "COM1", "\\\\?\\hid#vid_1209&pid_0015", "\\\\?\\hid#vid_046d&pid_0005",
          "\\\\?\\hid#pid_0005&vid_1209", "hid#vid_1209&pid_0005"}) {
        EXPECT_FALSE(bench.control->IsMyCommPort(other)) << other;
    }
    bench.start(true, {{"DefaultVendorID", 0x046D}});
    EXPECT_FALSE(bench.control->IsMyCommPort("\\hid#vid_046d&pid_0005")) << "paths are tied to the maker's identifiers";
    bench.control->DevicePrefix("Reader ");
    EXPECT_TRUE(bench.control->IsMyCommPort("READER 12"));
    EXPECT_FALSE(bench.control->IsMyCommPort("HID1"));
}

TEST(HidIdentifiers, AreReadAndSetInHexadecimalAtDesignTime) {
    ControlBench bench(false);
    auto& control = *bench.control;
    EXPECT_EQ(control.DefaultHexVendorID() + control.DefaultHexProductID(), "12090005");
    const std::pair<const char*, std::int32_t> table[] = {
        {"0x0ABC", 2748}, {"&habc", 2748}, {"zz", 0}, {"12zz", 0x12}, {"FFFFFFFF", -1}, {"000000000001F", 31},
    };
    for (const auto& [text, value] : table) {
        control.DefaultHexVendorID(text);
        control.DefaultHexProductID(text);
        EXPECT_EQ((std::pair{control.DefaultVendorID(), control.DefaultProductID()}), (std::pair{value, value}))
            << text;
    }
    control.DefaultVendorID(0x7FFEFFFF);
    EXPECT_EQ(control.DefaultHexVendorID(), "FFFF");
    control.DefaultVendorID(0x7FFF0000);
    EXPECT_THROW(control.DefaultHexVendorID(), RuntimeError);
    EXPECT_THROW(control.DefaultHexVendorID("123456789"), RuntimeError);
    control.DefaultProductID(-1);
    EXPECT_EQ(control.DefaultHexProductID(), "(Any PID)");
    control.DefaultHexProductID("(any pid)");  // it ends as product zero
    EXPECT_EQ(control.DefaultHexProductID(), "0000");
}

TEST(HidIdentifiers, ComeFromThePropertyBagAndCannotBeChangedAtRunTime) {
    const char kVendor[] = "The DefaultVederID property can't chagne at runtime!";
    const char kProduct[] = "The ProductID property can't chagne at runtime!";
    ControlBench bench(false);
    bench.bus.plug({"/dev/hidraw2", 0x0ABC, 77, "", "Other", ""}, bench.reader);
    bench.start(true, {{"DefaultVendorID", 0x0ABC}, {"DefaultProductID", -1}});
    auto& control = *bench.control;
    EXPECT_EQ(control.EnumCommPortEx(0), "HID1 Other");
    Texts boxes;
    control.showCritical = [&](const std::string& message) { boxes.push_back(message); };
    control.DefaultVendorID(1);
    control.DefaultProductID(1);
    control.DefaultHexVendorID("0001");
    control.DefaultHexProductID("(Any PID)");  // two stores
    control.Terminate();
    control.DefaultVendorID(1);  // without a handle it is run time still
    EXPECT_EQ(boxes, Texts({kVendor, kProduct, kVendor, kProduct, kProduct, kVendor}));
    VellIO::PropertyBag saved;
    control.WriteProperties(saved);
    EXPECT_EQ(saved, (VellIO::PropertyBag{{"DefaultProductID", -1}, {"DefaultVendorID", 0x0ABC}}));
}

}  // namespace corvane::tests
