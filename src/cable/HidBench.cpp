#include "cable/HidBench.h"

#include <cstdio>

#include "text/Number.h"
#include "text/Text.h"

namespace corvane::hidbench {
namespace {

/// A tab or a line end in a device's text would end its field or its line: the device would vanish from the list.
std::string field(std::string text) {
    for (char& letter : text) {
        if (letter == '\t' || letter == '\r' || letter == '\n') letter = ' ';
    }
    return text;
}

}  // namespace

std::string listText(const std::vector<Device>& devices) {
    std::string text;
    for (const auto& device : devices) {
        char ids[16];
        std::snprintf(ids, sizeof ids, "%04X\t%04X", device.vendor, device.product);
        text += joined({device.path, ids, field(device.manufacturer), field(device.name), field(device.serialNumber)},
                       "\t") +
                "\n";
    }
    return text;
}

std::vector<Device> listOf(std::string_view text) {
    std::vector<Device> devices;
    Lines lines(text);
    for (std::string_view line; lines.next(line);) {
        const auto fields = split(line, '\t');
        if (fields.size() != 6) continue;
        const auto vendor = hexNumber(fields[1]);
        const auto product = hexNumber(fields[2]);
        if (!vendor || !product || *vendor > 0xFFFF || *product > 0xFFFF) continue;
        devices.push_back({fields[0], static_cast<std::uint16_t>(*vendor), static_cast<std::uint16_t>(*product),
                           fields[3], fields[4], fields[5]});
    }
    return devices;
}

}  // namespace corvane::hidbench
