#include "hid/ControlBench.h"
#include "text/RuntimeError.h"

namespace corvane {
namespace {

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

}  // namespace
}  // namespace corvane
