#pragma once

#include "platform/Processes.h"

namespace corvane {

/// Reads /proc. A process's start is the identifier of the system's start and the ticks from there.
class ProcProcesses : public Processes {
public:
    ProcessMark own() override;
    bool isAlive(const ProcessMark& process) override;
};

}  // namespace corvane
