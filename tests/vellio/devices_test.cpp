#include "vellio/Bench.h"

namespace corvane {
namespace {

class Devices : public VellBench {
protected:
    Texts names(std::int32_t handle) {
        Texts result;
        const auto count = vellNumberOfDevice(handle);
        for (std::int32_t i = 0; i < count; ++i) result.push_back(vellEnumDeviceName(handle, i));
        return result;
    }

    ScriptedPeer peer_;
};

TEST_F(Devices, AreThoseOfTheWantedIdentifiers) {
    bus.plug(info(1, 5), peer_);
    bus.plug(info(2, 21), peer_);
    bus.plug({"/dev/hidraw3", 0x046D, 5, "Someone", "Mouse", ""}, peer_);
    EXPECT_EQ(vellNumberOfDevice(create(0x1209, 5)), 1);
    EXPECT_EQ(vellNumberOfDevice(create(0x1209, -1)), 2);
    EXPECT_EQ(vellNumberOfDevice(create(-1, 5)), 2);
    EXPECT_EQ(vellNumberOfDevice(create(-1, -1)), 3);
    EXPECT_EQ(vellCreate(0x10000, 5), 0);
    bus.isOutOfOrder(true);
    EXPECT_EQ(vellCreate(0x1209, 5), 0);
}

TEST_F(Devices, OfANewPairAreListedWithAnEventOfTheirOwn) {
    bus.plug(info(1, 5), peer_);
    bus.plug(info(2, 6, "Merlin"), peer_);
    const auto handle = create(0x1209, 5);
    EXPECT_TRUE(vellAddNewUSBID(handle, 0x1209, 6));
    EXPECT_EQ(dispatched(handle), Texts({"18:1:HID2 Merlin"}));
    EXPECT_EQ(names(handle), Texts({"HID1", "HID2"}));
    EXPECT_FALSE(vellAddNewUSBID(handle, 0x1209, 0x10000));
}

TEST_F(Devices, AreFoundByNameTextAndPath) {
    bus.plug(info(4, 5, "Kestrel (HID1)"), peer_);
    const auto handle = create(0x1209, 5);
    EXPECT_STREQ(vellEnumDeviceName(handle, 0), "HID1");
    EXPECT_STREQ(vellEnumDevice(handle, 0), "HID1 Kestrel (HID1)");
    for (const char* device : {"HID1", "hid1", "HID1 Kestrel (HID1)", "/dev/hidraw4"}) {
        EXPECT_STREQ(vellGetDeviceProduct(handle, device), "Kestrel (HID1)") << device;
        EXPECT_STREQ(vellGetDeviceManufacturer(handle, device), "Corvane");
        EXPECT_STREQ(vellGetDeviceSerialNumber(handle, device), "K4");
        EXPECT_TRUE(vellDeviceIsUSBID(handle, device, 0x1209, 5));
        EXPECT_FALSE(vellDeviceIsUSBID(handle, device, 0x1209, 21));
        std::int32_t vendor = 0, product = 0;
        EXPECT_TRUE(vellGetDeviceUSBID(handle, device, &vendor, &product));
        EXPECT_EQ(vendor, 0x1209);
        EXPECT_EQ(product, 5);
    }
    for (const char* device : {"HID2", "HID", "", "HID1 ", "/dev/hidraw5"}) {
        EXPECT_STREQ(vellGetDeviceProduct(handle, device), "") << device;
        EXPECT_FALSE(vellOpen(handle, device));
        EXPECT_STREQ(vellGetParamString(handle), "there is no device of that name");
    }
    for (const std::int32_t index : {-1, 1, 1000000}) EXPECT_STREQ(vellEnumDeviceName(handle, index), "");
}

TEST_F(Devices, CannotWriteControlCharactersIntoLogs) {
    bus.plug(info(1, 5, "Two\r\nLines\x1B[2J"), peer_);
    EXPECT_STREQ(vellEnumDevice(create(0x1209, 5), 0), "HID1 Two  Lines [2J");
}

TEST_F(Devices, CarryThePrefix) {
    bus.plug(info(1), peer_);
    const auto handle = create(0x1209, 5);
    EXPECT_STREQ(vellGetDevicePrefix(handle), "HID");
    vellSetDevicePrefix(handle, "USB");
    EXPECT_STREQ(vellEnumDeviceName(handle, 0), "USB1");
    EXPECT_TRUE(vellOpen(handle, "usb1"));
}

TEST_F(Devices, KeepTheirNumberAndNewcomersTakeTheLowestFreeOne) {
    bus.plug(info(1), peer_);
    bus.plug(info(2), peer_);
    bus.plug(info(3), peer_);
    const auto handle = create(0x1209, 5);
    bus.unplug("/dev/hidraw2");
    bus.unplug("/dev/hidraw1");
    EXPECT_EQ(names(handle), Texts({"HID3"}));
    bus.plug(info(9, 5, "Late"), peer_);
    EXPECT_EQ(names(handle), Texts({"HID1", "HID3"}));
    EXPECT_STREQ(vellEnumDevice(handle, 0), "HID1 Late");
    EXPECT_EQ(dispatched(handle), Texts({"17:0:HID1 Kestrel", "17:1:HID2 Kestrel", "16:0:HID1 Late"}));
}

TEST_F(Devices, ComeAndGoWithEventsFromDispatchOnly) {
    const auto handle = create(0x1209, 5);
    bus.plug(info(1), peer_);
    now = 499;  // the library looks twice a second
    EXPECT_FALSE(vellService(handle));
    now = 500;
    EXPECT_TRUE(vellService(handle));
    EXPECT_EQ(events, Texts());
    EXPECT_EQ(dispatched(handle), Texts({"16:0:HID1 Kestrel"}));
    vellSetScanTiming(handle, 20);
    bus.unplug("/dev/hidraw1");
    bus.plug(info(1, 5, "Other"), peer_);
    now = 520;
    EXPECT_TRUE(vellService(handle));
    EXPECT_EQ(dispatched(handle), Texts({"17:0:HID1 Kestrel", "16:0:HID1 Other"}));
    EXPECT_EQ(vellGetScanTiming(handle), 20);
    vellSetScanTiming(handle, -1);
    EXPECT_EQ(vellGetScanTiming(handle), 20);
}

TEST_F(Devices, AreCheckedForChangesWithAndWithoutEvents) {
    bus.tellsChanges(false);  // a system without the plug events
    const auto handle = create(0x1209, 5);
    EXPECT_FALSE(vellCheckDevicesIsChanged(handle, -1));
    bus.plug(info(1), peer_);
    EXPECT_TRUE(vellCheckDevicesIsChanged(handle, 0));
    EXPECT_EQ(events, Texts());
    EXPECT_FALSE(vellCheckDevicesIsChanged(handle, -1));
    EXPECT_EQ(events, Texts({"16:0:HID1 Kestrel"}));
}

TEST_F(Devices, TakeTheirHandleAwayInTheMiddleOfADelivery) {
    static std::int32_t calls;
    calls = 0;
    const auto handle = create(0x1209, 5);
    vellSetCallBackProc(
        handle,
        [](std::int32_t hVell, std::intptr_t, std::int32_t, std::int32_t) -> std::int32_t {
            ++calls;
            vellDestroy(hVell);
            return 0;
        },
        0);
    bus.plug(info(1), peer_);
    bus.plug(info(2), peer_);
    EXPECT_EQ(vellNumberOfDevice(handle), 2);
    vellDispatch(handle);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(vellNumberOfDevice(handle), 0);
}

TEST_F(Devices, EventsMayBeTakenOneByOne) {
    const auto handle = create(0x1209, 5);
    bus.plug(info(1), peer_);
    vellNumberOfDevice(handle);
    EXPECT_EQ(vellGetEvent(handle), 16);
    EXPECT_STREQ(vellGetParamString(handle), "HID1 Kestrel");
    EXPECT_EQ(vellGetEvent(handle), -1);
}

TEST_F(Devices, EventsThatNobodyTakesDoNotPileUp) {
    const auto handle = create(0x1209, 5);
    for (int i = 0; i < 1000; ++i) {
        bus.plug(info(1), peer_);
        vellNumberOfDevice(handle);
        bus.unplug("/dev/hidraw1");
        vellNumberOfDevice(handle);
    }
    EXPECT_EQ(dispatched(handle).size(), 256u);
    EXPECT_EQ(events.back(), "17:0:HID1 Kestrel");
}

}  // namespace
}  // namespace corvane
