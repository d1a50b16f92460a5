#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::hidbench {

/// How the bench's build of the transport library talks with the bench: packets (SOCK_SEQPACKET) over a Unix socket
/// whose path is in this variable. The first packet of a connection says what it is for:
///
///   'L'            the bench sends the whole device list now and after each change, a packet of lines each
///   'O' + path     the bench answers 'Y' and the connection is that device, or 'N' + the reason
///
/// On a device's connection a packet is a letter and a report (64 bytes, the ID first):
///
///   'R' + report   an input or an output report
///   'I' + report   get the input report of that ID        answer: 'I' + report, or 'X'
///   'G' + report   get the feature report of that ID      answer: 'G' + report, or 'X'
///   'S' + report   set the feature report                 answer: 'S', or 'X'
///
/// Input reports may come before an answer. When the bench closes the connection, the device is unplugged.
inline constexpr char kSocketVariable[] = "CORVANE_BENCH_SOCKET";
inline constexpr std::size_t kLargestPacket = 16384;

struct Device {
    std::string path;
    std::uint16_t vendor = 0;
    std::uint16_t product = 0;
    std::string manufacturer;  ///< texts in Windows-1252; a tab or a line end crosses as a blank
    std::string name;
    std::string serialNumber;
};

/// The list as text: a line a device, its fields separated by tabs, the IDs as four hexadecimal digits.
std::string listText(const std::vector<Device>& devices);

/// Lines that are none are left out.
std::vector<Device> listOf(std::string_view text);

}  // namespace corvane::hidbench
