#pragma once

#include <utility>

#include "face/RunView.h"
#include "protocol/DeviceScanner.h"
#include "protocol/IspSession.h"
#include "run/Outcome.h"
#include "run/RunPorts.h"

namespace corvane {

/// Many devices of one kind, one after the other on the same port: waits behind an update until its device is gone and
/// the next one answers. The log is left as it is. Owns nothing.
class Series {
public:
    Series(DeviceSession& session, RunPorts& ports, DeviceScanner& scanner, IspSession& isp, RunView& view)
        : session_(session), ports_(ports), scanner_(scanner), isp_(isp), view_(view) {}

    /// A new series, which nobody has ended yet.
    void begin() { isEnded_ = false; }

    /// Waits behind a run that ended so. True when the next device is there, and the same is to be done to it. False
    /// when it was no full success, which somebody has to see, or when the series was ended: then, or before.
    [[nodiscard]] bool next(const Outcome& outcome);

    /// The operator wants no further device; the one that is being updated is finished.
    void end();

    bool isWaiting() const { return isWaiting_; }

    /// Where the next device is, for one run; empty when none was waited for.
    struct Place {
        std::string port;
        std::string settings;
    };
    Place takePlace() { return std::exchange(place_, {}); }

private:
    bool hasGone(const std::string& answer, bool hasPort);
    bool isPortThere(const std::string& name);
    std::string ask(const RunFacts& last);
    void pause();

    DeviceSession& session_;
    RunPorts& ports_;
    DeviceScanner& scanner_;
    IspSession& isp_;
    RunView& view_;
    bool isEnded_ = false;
    bool isWaiting_ = false;
    Place place_;
    std::string lastVersion_;  // what the device that was updated says now; empty as long as nobody knows
    int silent_ = 0;           // questions in a row that it has not answered
    int looks_ = 0;
};

}  // namespace corvane
