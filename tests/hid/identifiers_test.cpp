#include "hid/FakeVell.h"
#include "text/RuntimeError.h"

namespace corvane {
namespace {

using Texts = std::vector<std::string>;

TEST(HidPortNames, AreThePrefixAndANumberOrAPathOfTheMakersReader) {
    const struct {
        const char* name;
        bool mine;
    } table[] = {
        {"hid1", true},
        {"HID256", true},
        {"HID0", false},
        {"HID257", false},
        {"HIDx", false},
        {"HID", false},
        {"HID1x", false},
        {"HID-1", false},
        {"COM1", false},
        {"", false},
        {"\\\\?\\hid#vid_1209&pid_0005#7&1", true},
        {"\\\\?\\HID#VID_1209&PID_0005", true},
        {"\\\\?\\hid#vid_1209&pid_0015", false},
        {"\\\\?\\hid#vid_046d&pid_0005", false},
        {"\\\\?\\hid#pid_0005&vid_1209", false},
        {"vid_1209&pid_0005\\hid", false},
        {"hid#vid_1209&pid_0005", false},  // begins with the prefix, and what follows is no number
    };
    ControlBench bench;
    for (const auto& row : table) EXPECT_EQ(bench.control->IsMyCommPort(row.name), row.mine) << row.name;
    bench.start(true, {{"DefaultVendorID", 0x046D}});
    EXPECT_FALSE(bench.control->IsMyCommPort("\\hid#vid_046d&pid_0005")) << "paths are tied to the maker's identifiers";
    bench.control->DevicePrefix("Reader ");
    EXPECT_TRUE(bench.control->IsMyCommPort("READER 12"));
    EXPECT_FALSE(bench.control->IsMyCommPort("HID1"));
}

TEST(HidIdentifiers, AreReadAndSetInHexadecimalAtDesignTime) {
    ControlBench bench(false);
    auto& control = *bench.control;
    EXPECT_EQ(control.DefaultVendorID(), 0x1209);
    EXPECT_EQ(control.DefaultProductID(), 5);
    EXPECT_EQ(control.DefaultHexVendorID(), "1209");
    EXPECT_EQ(control.DefaultHexProductID(), "0005");
    const std::pair<const char*, std::int32_t> table[] = {
        {"0x0ABC", 2748}, {"&H0ABC", 2748}, {"0ABC", 2748},  {"0abc", 2748},        {"&habc", 2748},
        {"zz", 0},        {"", 0},          {"12zz", 0x12},  {"0xFFFF", 65535},     {"FFFFFFFF", -1},
        {"0x", 0},        {"-5", 0},        {"12 34", 0x12}, {"000000000001F", 31},
    };
    for (const auto& [text, value] : table) {
        control.DefaultHexVendorID(text);
        EXPECT_EQ(control.DefaultVendorID(), value) << text;
        control.DefaultHexProductID(text);
        EXPECT_EQ(control.DefaultProductID(), value) << text;
    }
    control.DefaultVendorID(0x0ABC);
    EXPECT_EQ(control.DefaultHexVendorID(), "0ABC");
    control.DefaultProductID(-1);
    EXPECT_EQ(control.DefaultHexProductID(), "(Any PID)");
    control.DefaultVendorID(-1);
    EXPECT_EQ(control.DefaultHexVendorID(), "FFFF");
    EXPECT_EQ(bench.boxes, Texts());
}

TEST(HidIdentifiers, AnyProductEndsAsProductZero) {
    ControlBench bench(false);
    for (const char* text : {"(any pid)", "(ANY PID)", "(Any PID)"}) {
        bench.control->DefaultProductID(5);
        bench.control->DefaultHexProductID(text);
        EXPECT_EQ(bench.control->DefaultProductID(), 0);
        EXPECT_EQ(bench.control->DefaultHexProductID(), "0000");
    }
}

TEST(HidIdentifiers, BeyondTheRangeTheyOverflow) {
    ControlBench bench(false);
    bench.control->DefaultVendorID(0x7FFF0000);
    EXPECT_THROW(bench.control->DefaultHexVendorID(), RuntimeError);
    bench.control->DefaultVendorID(0x7FFEFFFF);
    EXPECT_EQ(bench.control->DefaultHexVendorID(), "FFFF");
    EXPECT_THROW(bench.control->DefaultHexVendorID("123456789"), RuntimeError);
}

TEST(HidIdentifiers, CannotBeChangedAtRunTime) {
    const char kVendor[] = "The DefaultVederID property can't chagne at runtime!";
    const char kProduct[] = "The ProductID property can't chagne at runtime!";
    ControlBench bench;
    auto& control = *bench.control;
    control.DefaultVendorID(1);
    control.DefaultProductID(1);
    control.DefaultHexVendorID("0001");
    control.DefaultHexProductID("0001");
    EXPECT_EQ(bench.boxes, Texts({kVendor, kProduct, kVendor, kProduct}));
    bench.boxes.clear();
    control.DefaultHexProductID("(Any PID)");  // two stores
    EXPECT_EQ(bench.boxes, Texts({kProduct, kProduct}));
    EXPECT_EQ(control.DefaultVendorID(), 0x1209);
    EXPECT_EQ(control.DefaultProductID(), 5);
    control.Terminate();
    control.DefaultVendorID(1);  // without a handle it is run time still
    EXPECT_EQ(control.DefaultVendorID(), 0x1209);
}

}  // namespace
}  // namespace corvane
