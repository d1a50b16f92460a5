#include "models/TarnPlusApplication.h"

namespace corvane::models {
namespace {

constexpr std::uint8_t kAccepted = 0x06;
constexpr std::uint8_t kRefused = 0x15;
constexpr std::uint8_t kLoginDemanded = 228;
constexpr std::uint8_t kNoSuchFunction = 1;

enum Function : std::uint8_t {
    loginInformation = 0x00,
    version = 0x01,
    password = 0x03,
    endOfSession = 0x04,
    enterBoot = 0x1F
};

}  // namespace

void TarnPlusApplication::start(Micros) {
    reader_.abandon();
    isLoggedIn_ = false;
}

Next TarnPlusApplication::hear(Micros now, std::uint8_t byte) {
    const auto request = reader_.hear(byte);
    board_.log.badFrames = reader_.badFrames();
    if (!request) return Next::goOn;
    board_.log.requests.push_back(*request);
    auto& faults = board_.faults;
    if (faults.strike(FaultKind::unplugRequest, request->function)) {
        board_.isPlugged = false;
        return Next::goOn;
    }
    if (faults.strike(FaultKind::deaf, request->function)) return Next::goOn;
    const auto* refusal = faults.strike(FaultKind::refuse, request->function);
    const Answer answer = refusal ? Answer{kRefused, refusal->bytes} : answerTo(*request);
    Bytes frame = replyFrame(request->address, answer.status, answer.data);
    if (faults.strike(FaultKind::crc, request->function)) frame.back() ^= 0x40;
    board_.reply(now, frame);
    return answer.next;
}

TarnPlusApplication::Answer TarnPlusApplication::answerTo(const Request& request) {
    const auto& demanded = board_.options.password;
    switch (request.function) {
        case Function::loginInformation:
            return {kAccepted, {static_cast<std::uint8_t>(demanded ? 0xFF : 0x00), 0x01, 0x10, 0x00}};
        case Function::version: {
            Bytes text = bytesOf(board_.version);
            if (board_.options.versionEndsInNul) text.push_back(0x00);
            return {kAccepted, text};
        }
        case Function::password:
            isLoggedIn_ = demanded && decodedPassword(request.parameters) == *demanded;
            return {isLoggedIn_ ? kAccepted : kRefused, {}};
        case Function::endOfSession:
            isLoggedIn_ = false;
            return {kAccepted, {}};
        case Function::enterBoot:
            if (demanded && !isLoggedIn_) return {kRefused, {kLoginDemanded}};
            return {kAccepted, {}, Next::enterBoot};
        default:
            return {kRefused, {kNoSuchFunction}};
    }
}

}  // namespace corvane::models
