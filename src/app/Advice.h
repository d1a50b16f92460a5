#pragma once

#include <string>

#include "app/RunReport.h"
#include "platform/SerialControl.h"

namespace corvane {

/// What to do after a run that did not update the device, in UTF-8; empty when there is nothing to say. siteProblem is
/// the transfer library's reason, empty when there is none.
std::string adviceFor(const RunReport& report, const std::string& siteProblem);

/// Why a port did not open and what helps.
std::string adviceFor(const std::string& port, const OpenFailure& failure);

}  // namespace corvane
