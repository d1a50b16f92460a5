#pragma once

#include <string_view>

namespace corvane {

/// The running log, the operator's record of what happened. Texts are Windows-1252 and bring their own CR LF.
class Log {
public:
    virtual ~Log() = default;
    virtual void ShowInfo(std::string_view text) = 0;
    virtual void clear() = 0;
};

}  // namespace corvane
