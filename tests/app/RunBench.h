#pragma once

#include <gtest/gtest.h>

#include "app/MainPresenter.h"
#include "models/Flash.h"
#include "support/AppBench.h"

namespace corvane {

/// A run in virtual time: a device, an image, the whole workflow.
class RunTest : public ::testing::Test {
protected:
    static constexpr char kImage[] =
        "[INFO]\nPGM=TARN-R200\nVER=V5.2R1\nBUD=2024/01/31\n"
        ":0400000001020304F2\n:0400100005060708D2\n:04002000090A0B0CB2\n:00000001FF\n";

    RunTest() { presenter.load(); }
    ~RunTest() override { updater.shutDown(); }

    models::Device& plug(models::DeviceOptions options = {}, std::int16_t number = 1) {
        devices.push_back(std::make_unique<models::Device>(std::move(options)));
        bench.serial.plug(number, *devices.back());
        return *devices.back();
    }

    models::Device& device() { return *devices.front(); }

    void loadImage(const std::string& content = kImage) {
        presenter.optLine_Click(true);
        ASSERT_TRUE(presenter.loadFile(bench.folder.folder.file("local.hex", content)));
    }

    RunReport start(bool force = false) {
        log().clear();
        return presenter.start(force);
    }

    std::string& log() { return bench.face.log; }

    /// Empty when the device's memory is the image's.
    std::string memoryFault(const std::string& image = kImage) {
        const auto text = models::comparison(device().flash(), models::imageOf(image));
        return text == "memory equals image" ? "" : text;
    }

    fakes::AppBench bench;
    Updater updater{bench.platform(), bench.face.face()};
    MainPresenter presenter{updater};
    std::vector<std::unique_ptr<models::Device>> devices;
};

inline constexpr char kFound[] =
    "\fOpen COM1 ... < OK\r\n   Scan by 19200,N,8,1\f[Local Site]\r\nComm Port : COM1\r\nDevice F/W: TARN-R200 "
    "V5.1R23\r\n\r\n";
inline constexpr char kOffer[] =
    "[FTP Site]\r\nProduct   : TARN-R200\r\nVersion   : V5.2R1\r\n\r\n[Update Information]\r\n";
inline constexpr char kGoTo[] = "GoTo ISP Mode (TarnPlus Protocol)...";
inline constexpr char kIsp[] = " < OK\r\n\r\n[ISP Mode]\r\n";

}  // namespace corvane
