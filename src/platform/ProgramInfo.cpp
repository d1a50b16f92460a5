#include "platform/ProgramInfo.h"

namespace corvane {

std::string programVersion() { return CORVANE_VERSION_TEXT; }

std::string defaultServer() { return CORVANE_DEFAULT_SERVER; }

std::string accountHint() { return CORVANE_ACCOUNT_HINT; }

}  // namespace corvane
