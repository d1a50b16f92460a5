#pragma once

#include <string>

namespace corvane {

/// What stands below the question for a device's password, which is easily taken for the site's. A refused one is asked
/// for again without a word of the device's.
inline std::string passwordRemark(int asked) {
    const std::string whose = "The device asks for its own password, not for the one of the site.";
    return asked == 0 ? whose : "The device did not take that password.\n" + whose;
}

}  // namespace corvane
