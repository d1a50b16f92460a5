#include "platform/linux/files/ProcProcesses.h"

#include <unistd.h>

#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

std::string contentOf(const std::string& path) {
    try {
        return readFile(path);
    } catch (const RuntimeError&) {
        return {};
    }
}

/// Empty when there is no such process, or when it has ended and nobody has asked how.
std::string startOf(int process) {
    constexpr std::size_t kState = 0, kStart = 19;  // counted behind the name, which may hold anything
    const auto status = contentOf("/proc/" + std::to_string(process) + "/stat");
    const auto name = status.rfind(") ");
    if (name == std::string::npos) return {};
    const auto fields = split(std::string_view(status).substr(name + 2), ' ');
    if (fields.size() <= kStart || fields[kState] == "Z" || fields[kState] == "X") return {};
    const auto boot = contentOf("/proc/sys/kernel/random/boot_id");
    return fields[kStart] + "@" + boot.substr(0, boot.find('\n'));
}

}  // namespace

ProcessMark ProcProcesses::own() { return {::getpid(), startOf(::getpid())}; }

bool ProcProcesses::isAlive(const ProcessMark& process) {
    return process.number > 0 && !process.start.empty() && startOf(process.number) == process.start;
}

}  // namespace corvane
