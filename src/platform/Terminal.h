#pragma once

#include <functional>
#include <optional>
#include <string>

namespace corvane {

/// The operator at a terminal.
class Terminal {
public:
    virtual ~Terminal() = default;

    /// True when standard input is one, so that questions can be asked.
    virtual bool isThere() const = 0;

    /// A line that is typed, without its end; events run meanwhile. Nothing at the end of the input, or when
    /// isAbandoned turns true. Without echo what is typed does not show.
    virtual std::optional<std::string> readLine(bool echo, const std::function<bool()>& isAbandoned) = 0;
};

}  // namespace corvane
