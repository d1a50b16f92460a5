#include "vellio/Bench.h"

namespace corvane {
namespace {

class Devices : public VellBench {
protected:
    Texts names(std::int32_t handle) {
        Texts result;
        const auto count = vellNumberOfDevice(handle);
        for (std::int32_t i = 0; i < count; ++i) result.push_back(vellEnumDevice(handle, i));
        return result;
    }
};

TEST_F(Devices, AreThoseOfTheWantedIdentifiers) {
    plug(1);
    plug(2, 6, "Merlin");
    bus.plug({"/dev/hidraw3", 0x046D, 5, "Someone", "Mouse", ""}, peer);
    const std::int32_t counts[][3] = {{0x1209, 5, 1}, {0x1209, -1, 2}, {-1, 5, 2}, {-1, -1, 3}};
    for (const auto& [vendor, product, count] : counts) {
        EXPECT_EQ(vellNumberOfDevice(create(vendor, product)), count) << vendor << " " << product;
    }
    const auto handle = create();
    EXPECT_TRUE(vellAddNewUSBID(handle, 0x1209, 6));
    EXPECT_EQ(dispatched(handle), Texts({"18:1:HID2 Merlin"}));
    EXPECT_EQ(names(handle), Texts({"HID1 Kestrel", "HID2 Merlin"}));
    EXPECT_FALSE(vellAddNewUSBID(handle, 0x1209, 0x10000));
    EXPECT_EQ(vellCreate(0x10000, 5), 0);
    bus.isOutOfOrder(true);
    EXPECT_EQ(vellCreate(0x1209, 5), 0);
}

TEST_F(Devices, AreFoundByNameTextAndPath) {
    plug(4, 5, "Kestrel (HID1)");
    const auto handle = create();
    EXPECT_STREQ(vellEnumDeviceName(handle, 0), "HID1");
    for (const char* device : {"HID1", "hid1", "HID1 Kestrel (HID1)", "/dev/hidraw4"}) {
        EXPECT_STREQ(vellGetDeviceProduct(handle, device), "Kestrel (HID1)") << device;
    }
    EXPECT_STREQ(vellGetDeviceManufacturer(handle, "HID1"), "Corvane");
    EXPECT_STREQ(vellGetDeviceSerialNumber(handle, "HID1"), "K4");
    EXPECT_TRUE(vellDeviceIsUSBID(handle, "HID1", 0x1209, 5));
    EXPECT_FALSE(vellDeviceIsUSBID(handle, "HID1", 0x1209, 21));
    std::int32_t vendor = 0, product = 0;
    EXPECT_TRUE(vellGetDeviceUSBID(handle, "HID1", &vendor, &product));
    EXPECT_EQ(vendor * 10 + product, 0x1209 * 10 + 5);
    for (const char* device : {"HID2", "HID", "", "HID1 ", "/dev/hidraw5"}) {
        EXPECT_FALSE(vellOpen(handle, device)) << device;
        EXPECT_STREQ(vellGetParamString(handle), "there is no device of that name");
    }
    for (const std::int32_t index : {-1, 1, 1000000}) EXPECT_STREQ(vellEnumDeviceName(handle, index), "");
    vellSetDevicePrefix(handle, "USB");
    EXPECT_STREQ(vellEnumDeviceName(handle, 0), "USB1");
    EXPECT_TRUE(vellOpen(handle, "usb1"));
}

TEST_F(Devices, KeepTheirNumberAndNewcomersTakeTheLowestFreeOne) {
    for (const int place : {1, 2, 3}) plug(place);
    const auto handle = create();
    bus.unplug(path(2));
    bus.unplug(path(1));
    EXPECT_EQ(names(handle), Texts({"HID3 Kestrel"}));
    plug(9, 5, "Two\r\nLines\x1B[2J");  // control characters do not get into logs
    EXPECT_EQ(names(handle), Texts({"HID1 Two  Lines [2J", "HID3 Kestrel"}));
    EXPECT_EQ(dispatched(handle), Texts({"17:0:HID1 Kestrel", "17:1:HID2 Kestrel", "16:0:HID1 Two  Lines [2J"}));
}

TEST_F(Devices, ComeAndGoWithEventsFromDispatchOnly) {
    const auto handle = create();
    plug(1);
    now = 499;  // the library looks twice a second
    EXPECT_FALSE(vellService(handle));
    now = 500;
    EXPECT_TRUE(vellService(handle));
    EXPECT_EQ(events, Texts());
    EXPECT_EQ(dispatched(handle), Texts({"16:0:HID1 Kestrel"}));
    for (const std::int32_t ms : {20, -1}) vellSetScanTiming(handle, ms);
    EXPECT_EQ(vellGetScanTiming(handle), 20);
    bus.unplug(path(1));
    plug(1, 5, "Other");
    now = 520;
    EXPECT_TRUE(vellService(handle));
    EXPECT_EQ(dispatched(handle), Texts({"17:0:HID1 Kestrel", "16:0:HID1 Other"}));
    bus.tellsChanges(false);  // a system without the plug events
    EXPECT_TRUE(vellCheckDevicesIsChanged(handle, -1));
    EXPECT_FALSE(vellCheckDevicesIsChanged(handle, -1));
    plug(2);
    EXPECT_TRUE(vellCheckDevicesIsChanged(handle, 0));
    EXPECT_EQ(events.size(), 2u) << "nothing is called back";
    EXPECT_FALSE(vellCheckDevicesIsChanged(handle, -1));
    EXPECT_EQ(events.back(), "16:1:HID2 Kestrel");
}

TEST_F(Devices, TakeTheirHandleAwayInTheMiddleOfADelivery) {
    static std::int32_t calls;
    calls = 0;
    const auto handle = create();
    const auto destroy = [](std::int32_t hVell, std::intptr_t, std::int32_t, std::int32_t) -> std::int32_t {
        vellDestroy(hVell);
        return ++calls;
    };
    vellSetCallBackProc(handle, destroy, 0);
    plug(1);
    plug(2);
    EXPECT_EQ(vellNumberOfDevice(handle), 2);
    vellDispatch(handle);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(vellNumberOfDevice(handle) + vellService(handle), 0);
    EXPECT_EQ(vellGetEvent(handle), -1);
}

TEST_F(Devices, EventsThatNobodyTakesDoNotPileUp) {
    const auto handle = create();
    for (int i = 0; i < 1000; ++i) {
        plug(1);
        vellNumberOfDevice(handle);
        bus.unplug(path(1));
        vellNumberOfDevice(handle);
    }
    EXPECT_EQ(vellGetEvent(handle), 16);
    EXPECT_STREQ(vellGetParamString(handle), "HID1 Kestrel");
    EXPECT_EQ(dispatched(handle).size(), 255u);
    EXPECT_EQ(events.back(), "17:0:HID1 Kestrel");
    EXPECT_EQ(vellGetEvent(handle), -1);
}

}  // namespace
}  // namespace corvane
