#include "platform/ProgramInfo.h"

namespace corvane {

std::string programVersion() { return CORVANE_VERSION_TEXT; }

std::string defaultServer() { return CORVANE_DEFAULT_SERVER; }

std::string makerKey() { return CORVANE_MAKER_KEY; }

std::string accountHint() { return CORVANE_ACCOUNT_HINT; }

}  // namespace corvane
