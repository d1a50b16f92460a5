#pragma once

#include <memory>
#include <optional>

#include "vellio/Channel.h"
#include "vellio/DeviceList.h"

namespace corvane::vellio {

/// The open device of a handle: moves reports between it and the channels. A device that fails is closed here, with the
/// event; whatever it sends is taken apart with care and otherwise ignored.
class Connection {
public:
    explicit Connection(EventQueue& events);

    void open(std::unique_ptr<HidDevice> device, const Device& identity, const std::string& text);
    void close();
    bool isOpen() const { return device_ != nullptr; }

    /// Who is open; null when nobody is.
    const Device* identity() const { return device_ ? &identity_ : nullptr; }

    /// Moves what can be moved without waiting; True when something new has come in.
    bool move();

    /// Sends until nothing is left; each report may take so many ms.
    void sendAll(int waitMs);

    /// Drops the input reports that wait in the system.
    bool flush();

    Channel& data() { return data_; }
    Channel& control() { return control_; }

    bool breakState() const { return break_; }
    void breakState(bool on);
    bool clearToSend() const { return device_ && clearToSend_; }

    int inputBuffers() const { return inputBuffers_; }
    void inputBuffers(int count) { inputBuffers_ = count; }

    bool getInputReport(HidReport& report, int waitMs) { return device_ && device_->getInputReport(report, waitMs); }
    bool getFeature(HidReport& report, int waitMs) { return device_ && device_->getFeature(report, waitMs); }
    bool setFeature(const HidReport& report, int waitMs) { return device_ && device_->setFeature(report, waitMs); }
    bool setOutputReport(const HidReport& report, int waitMs);

private:
    bool receive();
    void take(const HidReport& report);
    bool sendOne(int waitMs);
    bool hand(const HidReport& report, int waitMs);

    EventQueue& events_;
    Channel data_;
    Channel control_;
    std::unique_ptr<HidDevice> device_;
    Device identity_;
    std::string text_;
    bool break_ = false;
    bool breakToTell_ = false;
    bool clearToSend_ = false;
    bool news_ = false;
    int inputBuffers_ = 32;
};

}  // namespace corvane::vellio
