#include "protocol/DeviceLogin.h"

#include <algorithm>

#include "protocol/LineReader.h"

namespace corvane {
namespace {

constexpr std::uint8_t kIdentify = 0x00, kVersion = 0x01, kPassword = 0x03;
constexpr std::int32_t kPromptSilence = 100;  // ms
constexpr std::size_t kPromptLength = 4;

/// As long as it lives, what is sent is a secret.
class Veil {
public:
    Veil(DeviceSession& session, const Bytes& secret) : session_(session) {
        if (session_.veil) session_.veil(secret);
    }
    ~Veil() {
        if (session_.veil) session_.veil({});
    }
    Veil(const Veil&) = delete;
    Veil& operator=(const Veil&) = delete;

private:
    DeviceSession& session_;
};

}  // namespace

Bytes EncodePassword(const std::string& text) {
    Bytes encoded = bytesOf(text);
    for (std::size_t i = 0; i + 1 < encoded.size(); ++i) encoded[i] ^= encoded[i + 1];
    return encoded;
}

bool DeviceLogin::Login(std::string& szPass) {
    session_.loggedIn = false;
    Variant reply = Bytes();
    if (!query_.Query(kIdentify, reply, {}, 0, 5000)) return false;
    const auto& data = std::get<Bytes>(reply);
    if (data.size() <= 2) return false;
    if (data[0] < 0xFF) return true;
    while (!isPasswordAccepted(szPass)) {
        if (!session_.comm->PortOpen()) return false;  // nobody is there to refuse or take another one
        szPass = prompt_.inputBox("Please type in password:", "Password", "quill");
        if (szPass.empty()) return false;
    }
    session_.loggedIn = true;
    return true;
}

bool DeviceLogin::isPasswordAccepted(const std::string& password) {
    Variant nothing;
    const auto encoded = EncodePassword(password);
    const Veil veil(session_, encoded);
    return query_.Query(kPassword, nothing, encoded, 0, 3000);
}

bool DeviceLogin::GetVersion(std::string& szVersion, std::int32_t timeout) {
    Variant reply = Bytes();
    if (!query_.Query(kVersion, reply, {}, 0, timeout)) return false;
    auto& data = std::get<Bytes>(reply);
    if (!data.empty() && data.back() == 0) data.pop_back();
    if (data.empty()) return false;
    szVersion = textOf(data);
    return true;
}

bool DeviceLogin::DetectPrompt() {
    constexpr int kAttempts = 2;
    auto& comm = *session_.comm;
    if (!comm.PortOpen()) return false;
    const auto mode = comm.InputMode();
    comm.InputMode(0);
    session_.discardInput();
    clsTimeout whole(session_.runtime);
    whole.Timeout(kLongestDrain);
    std::string collected;
    bool found = false;
    for (int attempt = 0; attempt < kAttempts && !found && !session_.cancel.isRequested(); ++attempt) {
        session_.runtime.Sleep(50);
        found = session_.send(std::string("\r")) && waitForPrompt(collected, whole);
    }
    comm.InputMode(mode);
    return found;
}

bool DeviceLogin::waitForPrompt(std::string& collected, clsTimeout& whole) {
    clsTimeout silence(session_.runtime);
    silence.Timeout(kPromptSilence);
    while (!silence.IsTimeout() && !whole.IsTimeout() && !session_.cancel.isRequested()) {
        if (session_.comm->InBufferCount() >= 1) {
            const auto bytes = session_.takeInput();
            collected += textOf(bytes);
            const bool isPrompt = holdsPrompt(collected);
            session_.noteStrays(bytes, isPrompt ? static_cast<int>(kPromptLength) : 0);
            if (isPrompt) return true;
            collected.erase(0, collected.size() - std::min(collected.size(), kPromptLength - 1));
            silence.Reset();
        } else if (!session_.comm->PortOpen()) {
            return false;
        }
        session_.runtime.WaitActivity(1);
        session_.runtime.DoEvents();
    }
    return false;
}

void DeviceLogin::Delay(std::int32_t lDelayTime) {
    clsTimeout delay(session_.runtime);
    delay.Timeout(lDelayTime);
    while (!delay.IsTimeout()) {
        session_.runtime.WaitActivity(1);
        session_.runtime.DoEvents();
    }
}

}  // namespace corvane
