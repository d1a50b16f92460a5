#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "models/Frame.h"

namespace corvane::models {

/// What a device has seen, in order.
struct DeviceLog {
    std::vector<Request> requests;         ///< sound frames, unanswered ones too
    std::vector<std::string> commands;     ///< text commands of the older application, without STX and CR
    std::vector<std::string> records;      ///< every record that the boot loader heard, refused and repeated ones too
    std::vector<std::string> refused;      ///< those that did not add up
    int badFrames = 0;                     ///< requests with a wrong CRC
    int prompts = 0;                       ///< times that the boot loader was asked for its prompt
    int erases = 0;                        ///< erase commands, refused ones too
    int restarts = 0;                      ///< restart commands
    int switches = 0;                      ///< from the application into the boot loader
    std::uint32_t replies = 0;             ///< answers, lost ones too
    std::size_t bytesHeard = 0;            ///< at any rate
    std::map<std::uint32_t, Bytes> heard;  ///< by the host's rate
    Bytes application;                     ///< heard by the application at its rate
    Bytes boot;                            ///< heard by the boot loader at its rate
};

}  // namespace corvane::models
