#pragma once

#include "faults/explore/Wire.h"
#include "image/Image.h"

namespace corvane::faults {

/// Counts the unsent bytes, reports none at all, or is a HID reader.
enum class PortKind { counting, blind, hid };

/// An image, and the memory that it makes.
class TestImage {
public:
    explicit TestImage(const std::string& records);
    const Image& value() const { return image_; }
    const models::Flash& memory() const { return memory_.memory; }

private:
    Image image_;
    models::Image memory_;
};

/// How a run ended, and what became of the device.
struct Outcome {
    int status = 0;  ///< what the program exits with
    bool isRight = false, isRunning = false;
    std::vector<Step> steps;
    std::vector<Event> struck;
    std::string log, conversation;

    bool isSuccess() const { return status == 0 && isRight && isRunning; }
    /// "Updated" is said of a device that is not.
    bool isWrong() const { return status == 0 && !(isRight && isRunning); }
};

/// One update of a device that runs its old application, by the program's whole workflow, in virtual time.
Outcome attempt(PortKind kind, const TestImage& image, const Wire::Plan& plan);

}  // namespace corvane::faults
