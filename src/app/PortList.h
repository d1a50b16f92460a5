#pragma once

#include <string>
#include <vector>

#include "hid/VellIO.h"
#include "platform/PortInspector.h"
#include "platform/PortMap.h"

namespace corvane {

/// A serial port or a reader by what people know it by; UTF-8.
struct PortRow {
    std::string name;     ///< "COM1", "HID1"
    std::string place;    ///< "/dev/ttyUSB0"; empty for a reader
    std::string product;  ///< what adapter or reader call themselves
    std::string serialNumber;
    std::string problem;  ///< why it cannot be opened; empty when it can

    /// Name, product, serial number and place: "COM1  USB-Serial Controller, A9001  /dev/ttyUSB0".
    std::string text() const;
};

/// The ports and readers that exist, without opening any. Owns nothing.
class PortList {
public:
    PortList(PortMap& map, PortInspector& inspector, VellIO& readers)
        : map_(map), inspector_(inspector), readers_(readers) {}

    /// True when it is another list than at the last look, or the first one. Looking for the program that holds a port
    /// takes time, so that is done only then.
    bool look();

    const std::vector<PortRow>& rows() const { return rows_; }

private:
    std::string problemOf(const std::string& node);

    PortMap& map_;
    PortInspector& inspector_;
    VellIO& readers_;
    std::vector<std::string> seen_;  // a text for each that changes with it
    bool hasLooked_ = false;
    std::vector<PortRow> rows_;
};

}  // namespace corvane
