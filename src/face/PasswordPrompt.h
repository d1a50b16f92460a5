#pragma once

#include <string>

namespace corvane {

/// Asks the operator for a text; an empty answer also stands for Cancel. Texts in Windows-1252.
class PasswordPrompt {
public:
    virtual ~PasswordPrompt() = default;
    virtual std::string inputBox(const std::string& prompt, const std::string& title, const std::string& byDefault) = 0;
};

}  // namespace corvane
