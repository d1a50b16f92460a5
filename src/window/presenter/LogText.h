#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// The running log as a window holds it: Windows-1252 with CR LF, capped, so that a program left open does not grow.
class LogText {
public:
    /// Adds a text at the end. True when the oldest part was dropped for it.
    bool append(std::string_view text);
    void clear() { text_.clear(); }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

}  // namespace corvane
