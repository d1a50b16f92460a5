#pragma once

#include <string>
#include <vector>

#include "report/RunReport.h"

namespace corvane {

/// What a report says, for somebody who was not there: lines in UTF-8, without control characters.
std::vector<std::string> accountOf(const RunReport& report);

/// The whole dialogue, annotated: a line for what was sent and one for what came.
std::vector<std::string> bytesOf(const RunReport& report);

/// What each record took, beside what the line itself needs for it.
std::vector<std::string> timingOf(const RunReport& report);

/// The account as one JSON object.
std::string jsonOf(const RunReport& report);

}  // namespace corvane
