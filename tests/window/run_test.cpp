#include "WindowTest.h"

namespace corvane {
namespace {

class WindowRun : public WindowTest {};

constexpr char kIdle[] =
    "cmdStartCheck cmdForceISP cmdOption optLine0 optLine1 txtServer txtAccount0 txtAccount1 optFile optLast "
    "cmdLoadFile cmdCopyLog cmdSaveLog ";

TEST_F(WindowRun, CarriesADeviceThroughAWholeUpdate) {
    models::DeviceOptions options;
    options.nextVersion = "TARN-R200 V5.2R1";
    plug(options);
    pickImage();
    agree();
    press("cmdStartCheck");
    EXPECT_EQ(log(),
              "[Local Site]\nComm Port : COM1\nDevice F/W: TARN-R200 V5.1R23\n\n"
              "[FTP Site]\nProduct   : TARN-R200\nVersion   : V5.2R1\n\n[Update Information]\n"
              "TARN-R200 V5.2R1(2024/01/31)\n\nGoTo ISP Mode (TarnPlus Protocol)... < OK\n\n[ISP Mode]\n"
              "Erase Firmware... < OK\nProgramming... < OK\nUpdate Finish\n");
    EXPECT_EQ(memoryFault(), "");
    EXPECT_EQ(enabled(), kIdle);
    EXPECT_EQ(text("labDevice"), "COM1: TARN-R200 V5.1R23");
    EXPECT_EQ(text("labNotice"), "The device is updated.");
}

}  // namespace
}  // namespace corvane
