#pragma once

#include <gtest/gtest.h>

#include "models/Device.h"
#include "protocol/IspSession.h"
#include "support/RecordingFace.h"
#include "support/ScriptedPeer.h"
#include "support/hid/PortBench.h"

namespace corvane {

/// A dialogue over each kind of port, with a simulated device or a far end that says what is written down for it.
struct Dialogue : fakes::OverEachPort {
    /// A device at the open port, in place of what was there.
    models::Device& connect(models::DeviceOptions options = {}) {
        auto next = std::make_unique<models::Device>(std::move(options));
        reopen(*next);
        device = std::move(next);
        return *device;
    }

    fakes::ScriptedPeer& connectPeer() {
        auto next = std::make_unique<fakes::ScriptedPeer>();
        reopen(*next);
        peer = std::move(next);
        return *peer;
    }

    /// A boot loader alone.
    static models::DeviceOptions bootLoader(const models::Faults& faults = {}) {
        return {.kind = models::Kind::boot, .faults = faults};
    }

    void reopen(models::Peer& farEnd, const std::string& settings = "19200,N,8,1") {
        if (bench.port.PortOpen()) bench.port.PortOpen(false);
        bench.open(farEnd, settings);
        face.log.clear();
        begin = bench.runtime.ms();
    }

    /// Since the port was opened.
    std::int64_t ms() const { return bench.runtime.ms() - begin; }

    void expectMs(std::int64_t atLeast, std::int64_t atMost) const {
        EXPECT_GE(ms(), atLeast);
        EXPECT_LE(ms(), atMost);
    }

    std::unique_ptr<fakes::ScriptedPeer> peer;
    std::unique_ptr<models::Device> device;
    fakes::RecordingFace face;
    Cancel cancel;
    DeviceSession session{bench.runtime, face, bench.port, cancel};
    DeviceQuery query{session};
    LineReader reader{session};
    DeviceLogin login{session, face};
    IspSession isp{session, face};
    std::int64_t begin = 0;
};

}  // namespace corvane
