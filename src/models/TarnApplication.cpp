#include "models/TarnApplication.h"

#include <utility>

namespace corvane::models {
namespace {

constexpr char kStx = 0x02;
constexpr char kCr = 0x0D;
constexpr std::size_t kLongestCommand = 64;

}  // namespace

Next TarnApplication::hear(Micros now, std::uint8_t byte) {
    const char c = static_cast<char>(byte);
    if (c == kStx) {
        command_.emplace();
    } else if (command_ && c == kCr) {
        const std::string command = *std::exchange(command_, std::nullopt);
        board_.log.commands.push_back(command);
        return obey(now, command);
    } else if (command_ && command_->size() < kLongestCommand) {
        *command_ += c;
    }
    return Next::goOn;
}

Next TarnApplication::obey(Micros now, const std::string& command) {
    std::string line(1, kStx);
    Next next = Next::goOn;
    if (const auto* other = board_.faults.strike(FaultKind::tarn, 0, command)) {
        line += textOf(other->bytes);
    } else if (command == "D00") {
        line += "D00=1";
    } else if (command == "F") {
        line += 'A';
        line += board_.version;
    } else if (command == "X") {
        line += 'A';
        next = Next::enterBoot;
    } else {
        return Next::goOn;
    }
    line += kCr;
    board_.reply(now, bytesOf(line));
    return next;
}

}  // namespace corvane::models
