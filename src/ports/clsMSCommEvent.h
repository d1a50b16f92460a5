#pragma once

#include <functional>

namespace corvane {

/// The event that all ports share: whoever listens hears of it from whichever port is in use, and reads that port's
/// CommEvent for the reason.
class clsMSCommEvent {
public:
    std::function<void()> OnComm;

    void RaiseOnComm() const {
        if (OnComm) OnComm();
    }
};

}  // namespace corvane
