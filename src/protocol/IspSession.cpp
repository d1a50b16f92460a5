#include "protocol/IspSession.h"

namespace corvane {
namespace {

constexpr std::uint8_t kEnterIsp = 0x1F;
constexpr std::uint8_t kLoginFirst = 228;  // a refusal's reason
constexpr std::uint8_t kAck = 6, kLine = 13, kNak = 21;
constexpr std::int32_t kOwed = 1500;  // ms of silence; no answer to what was sent before comes later
constexpr double kEraseTime = 10;     // s of silence that an erase may take

// One letter for two things: an application understands "enter the boot loader", a boot loader "erase".
const std::string kLetterX = "\x02X\r";
const std::string kRestart = "\x02R\r";

}  // namespace

bool IspSession::GoToISP() {
    const bool isTarn = session_.protocolName == "Tarn";
    session_.log.ShowInfo(isTarn ? "GoTo ISP Mode (Tarn Protocol)..." : "GoTo ISP Mode (TarnPlus Protocol)...");
    switch_ = isTarn ? switchTarn() : switchTarnPlus();
    if (switch_ != Switch::accepted) {
        session_.log.ShowInfo(" < NG\r\n");
        return false;
    }
    const bool seen = awaitBootLoader();
    session_.log.ShowInfo(" < OK\r\n");
    return seen;
}

bool IspSession::returnToBootLoader() {
    constexpr int kTries = 2;  // one of the questions or answers may have been lost
    for (int i = 0; i < kTries; ++i) {
        const auto answer = session_.protocolName == "Tarn" ? switchTarn() : switchTarnPlus();
        if (answer != Switch::refused && answer != Switch::locked && awaitBootLoader()) return true;
    }
    return false;
}

bool IspSession::awaitBootLoader() {
    login_.Delay(1000);
    session_.discardInput();
    return findPrompt();
}

IspSession::Switch IspSession::switchTarnPlus() {
    constexpr std::int32_t kTimeout = 5000;
    Variant reply = std::uint8_t{0};
    if (query_.Query(kEnterIsp, reply, {}, 0, kTimeout)) return Switch::accepted;
    if (std::get<std::uint8_t>(reply) == kLoginFirst) {
        std::string password = "quill";
        if (!login_.Login(password)) return Switch::locked;
        if (query_.Query(kEnterIsp, reply, {}, 0, kTimeout)) return Switch::accepted;
    }
    return query_.wasAnswered() ? Switch::refused : Switch::unanswered;
}

IspSession::Switch IspSession::switchTarn() {
    const bool answered = session_.send(kLetterX) && lines_.wait_comm(0.5) == kLine;
    // A line of text has no checksum: one that is not "A" may be a damaged "A", so it counts as no answer.
    return answered && session_.receivedLine.front() == 'A' ? Switch::accepted : Switch::unanswered;
}

/// Looks for the prompt at the boot loader's rate; when no rate is known, at the present one and then at 115200.
bool IspSession::findPrompt() {
    // Without a comma behind the rate: every kind of port reads the field's leading number.
    if (session_.ispBaudRate > 0) setPortSettings(std::to_string(session_.ispBaudRate) + "N,8,1");
    if (login_.DetectPrompt()) return true;
    if (session_.ispBaudRate != -1) return false;
    const auto before = session_.comm->Settings();
    setPortSettings("115200,N,8,1");
    if (login_.DetectPrompt()) return true;
    setPortSettings(before);
    return false;
}

void IspSession::setPortSettings(const std::string& settings) {
    try {
        session_.comm->Settings(settings);
    } catch (const RuntimeError&) {
        // The port was lost; no prompt will be seen on it.
    }
}

bool IspSession::ISP_Erase() {
    session_.log.ShowInfo("Erase Firmware...");
    const auto start = session_.runtime.tick();
    const auto answer = session_.send(kLetterX) ? lines_.wait_comm(kEraseTime) : 0;
    bool erased = answer == kAck;
    // An erase that was not answered in time may still be going on, and this may be the first command's answer while
    // the second one is at work. Both are done when the boot loader prompts again.
    if (erased && isEraseOwed_) erased = awaitPrompt();
    eraseTime_ = static_cast<std::int32_t>(session_.runtime.tick() - start);
    if (answer != kNak) isEraseOwed_ = !erased;
    if (erased) dropEcho();
    session_.log.ShowInfo(erased ? " < OK\r\n" : " < NG\r\n");
    return erased;
}

/// True when the boot loader prompts within the time that an erase may take.
bool IspSession::awaitPrompt() {
    clsTimeout whole(session_.runtime);
    whole.Timeout(static_cast<std::int32_t>(1000 * kEraseTime));
    while (!whole.IsTimeout() && session_.comm->PortOpen()) {
        if (login_.DetectPrompt()) {
            lines_.settle(kOwed);  // it answers each carriage return that it was sent meanwhile
            return true;
        }
    }
    return false;
}

/// Drops a second copy of the erase's answer, which would be taken for the first record's.
void IspSession::dropEcho() {
    constexpr int kEcho = 20;  // ms
    session_.runtime.Sleep(kEcho);
    if (lines_.along().answers() + lines_.waiting().answers() > 0) lines_.settle(kOwed);
}

void IspSession::ISP_Reset() {
    session_.log.ShowInfo("Update Finish\r\n");
    restartAgain();
}

void IspSession::restartAgain() { session_.send(kRestart); }

void IspSession::wait_output_empty(std::int32_t limit) {
    for (std::int32_t waited = 1; waited <= limit; waited += 50) {
        session_.runtime.Sleep(50);
        if (session_.comm->PortOpen() && session_.comm->OutBufferCount() == 0) return;
    }
}

}  // namespace corvane
