#pragma once

namespace corvane {

/// The operator's wish to end what is going on. There is one in the program: whoever starts something that may be
/// cancelled begins it, a face requests, and the waits below look. A question to a device ends at the next look; an
/// exchange with a HID reader goes on to its end and no other one follows.
class Cancel {
public:
    /// Something new may be cancelled: forgets an earlier request.
    void begin() {
        isEnabled_ = true;
        isRequested_ = wasRequested_ = false;
    }

    /// No request counts from now on; one that was made still stands.
    void disable() { isEnabled_ = false; }

    /// What follows runs to its end, whatever was requested before.
    void end() { isEnabled_ = isRequested_ = false; }

    /// Does nothing while it is disabled.
    void request() {
        if (isEnabled_) isRequested_ = wasRequested_ = true;
    }

    [[nodiscard]] bool isEnabled() const { return isEnabled_; }
    [[nodiscard]] bool isRequested() const { return isRequested_; }

    /// Whether anything was requested since begin, even if the end has come.
    [[nodiscard]] bool wasRequested() const { return wasRequested_; }

private:
    bool isEnabled_ = true;
    bool isRequested_ = false;
    bool wasRequested_ = false;
};

}  // namespace corvane
