#pragma once

#include <string>

namespace corvane {

/// A process, told apart from a later one that is given the same number.
struct ProcessMark {
    int number = 0;     ///< 0 for none
    std::string start;  ///< when it began, in the system's way of counting

    bool operator==(const ProcessMark&) const = default;
};

/// The processes of this computer.
class Processes {
public:
    virtual ~Processes() = default;
    virtual ProcessMark own() = 0;
    virtual bool isAlive(const ProcessMark& process) = 0;
};

}  // namespace corvane
