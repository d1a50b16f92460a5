#pragma once

#include "face/RunView.h"
#include "protocol/DeviceQuery.h"

namespace corvane {

/// The HID reader that is open: its text and firmware version, both empty for a serial port.
class OpenReader {
public:
    virtual ~OpenReader() = default;
    virtual std::string deviceText() = 0;
    virtual std::string firmwareText() = 0;

    /// What tells the reader, or the adapter at a serial port, from others; UTF-8, empty when nothing does.
    virtual std::string place(const std::string& port) = 0;
};

/// The two port objects of a run, one of which is the session's current port. Owns neither.
class RunPorts {
public:
    RunPorts(DeviceSession& session, clsIMScomm& serialPort, clsIMScomm& hidPort, OpenReader& reader)
        : session_(session), query_(session), serialPort_(serialPort), hidPort_(hidPort), reader_(reader) {}

    /// The current port's name; behind a HID reader's its own firmware version.
    std::string name() const;

    /// What tells the current port's adapter or reader from others; UTF-8, empty when nothing does.
    std::string place() const { return reader_.place(session_.comm->CommPort()); }

    /// The current port was open and is gone.
    bool isLost() const { return !session_.comm->PortOpen(); }

    /// Closes whatever is open; a device that accepted a password over HID is told that the session ends. What goes
    /// wrong is told the view, and ends nothing. The HID port is the current one afterwards.
    void close(RunView& view);

private:
    DeviceSession& session_;
    DeviceQuery query_;
    clsIMScomm& serialPort_;
    clsIMScomm& hidPort_;
    OpenReader& reader_;
};

}  // namespace corvane
