#include "platform/serial/PortMapFile.h"

#include <filesystem>

#include "text/Number.h"
#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

constexpr int kHighestPort = 256;

/// 0 when the text is not "COM" and a number from 1 to 256.
int portNumber(std::string_view key) {
    if (!startsWithNoCase(key, "COM") || key.size() > 6) return 0;
    const auto digits = key.substr(3);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos) return 0;
    const double number = leadingNumber(digits);
    return number <= kHighestPort ? static_cast<int>(number) : 0;
}

/// The cure for a line that cannot be used; empty when it has been taken.
std::string take(std::string_view line, PortMapFile& file) {
    const auto equals = line.find('=');
    const auto key = trimmed(line.substr(0, equals));
    const auto value = equals == std::string_view::npos ? std::string_view() : trimmed(line.substr(equals + 1));
    if (equalsNoCase(key, "auto")) {
        const bool off = equalsNoCase(value, "off");
        if (!off && !equalsNoCase(value, "on")) return "write auto=off or auto=on.";
        file.listsOthers = !off;
        return {};
    }
    const int number = portNumber(key);
    if (number == 0) return "write a port from COM1 to COM256, \"=\" and a device such as /dev/ttyUSB0.";
    if (value.empty() || value.front() != '/') return "the device must be a whole path, such as /dev/ttyUSB0.";
    if (!file.paths.emplace(number, value).second)
        return "this port has a device already; give the line another number.";
    return {};
}

}  // namespace

PortMapFile readPortMapFile(const std::string& path) {
    PortMapFile file;
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return file;
    std::string content;
    try {
        content = readFile(path);
    } catch (const RuntimeError&) {
        file.problems.push_back(path + " cannot be read; make it a file that you may read, or remove it.");
        return file;
    }
    int number = 0;
    std::string_view line;
    for (Lines lines(withoutUtf8Mark(content)); lines.next(line);) {
        ++number;
        line = trimmed(line.substr(0, line.find('#')));
        const auto cure = line.empty() ? std::string() : take(line, file);
        if (cure.empty()) continue;
        file.problems.push_back(path + ", line " + std::to_string(number) + ", \"" + std::string(line) +
                                "\" is not used: " + cure);
    }
    return file;
}

}  // namespace corvane
