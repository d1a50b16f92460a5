#pragma once

#include <string>
#include <vector>

#include "report/Dialogue.h"
#include "report/RunReport.h"

namespace corvane {

/// What kept a run from going as it should, as far as its recording shows: a sentence for each cause in the order in
/// which they struck, in UTF-8. Empty when nothing did.
std::vector<std::string> findingsOf(const RunReport& report);

}  // namespace corvane
