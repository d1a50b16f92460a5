#pragma once

#include <cstdint>
#include <string>

#include "hid/HidCommandChannel.h"
#include "hid/ReaderCommands.h"
#include "hid/VellSession.h"
#include "platform/Cancel.h"
#include "platform/Runtime.h"
#include "text/Variant.h"

namespace corvane {

/// A reader with the face of a serial port: what the properties mean for the library, and what opening and closing tell
/// the reader. Without a handle every property reads 0, False or an empty text, and nothing is written.
class HidPort {
public:
    HidPort(VellSession& session, HidCommandChannel& channel, ReaderCommands& commands, Runtime& runtime,
            const Cancel& cancel)
        : session_(session), channel_(channel), commands_(commands), runtime_(runtime), cancel_(cancel) {}

    bool PortOpen() { return session_.isOpen(); }

    /// Opening sets the reader's rate and reads its own direction, which closing gives back; read it back to learn how
    /// it went. After a cancel no further command follows, and a direction that was never read is not given back.
    void PortOpen(bool bPortOpen);

    /// Why the last opening failed, in plain words; empty when it did not.
    const std::string& openFailure() const { return openFailure_; }

    const std::string& CommPort() const { return commPort_; }
    void CommPort(const std::string& szCommPort) { commPort_ = szCommPort; }  ///< used at the next opening

    std::string Settings() const { return std::to_string(commands_.baudRate()) + ",N,8,1"; }

    /// Only the rate counts; an open reader is told, and must accept it. Throws RuntimeError overflow for a rate beyond
    /// 32 bits.
    void Settings(const std::string& szSettings);

    std::int32_t InBufferCount();
    void discardIn();
    std::int32_t InBufferSize();
    void InBufferSize(std::int32_t lInBufferSize);
    std::int32_t OutBufferCount();
    void discardOut();
    std::int32_t OutBufferSize();
    void OutBufferSize(std::int32_t lOutBufferSize);

    Variant CommInput();
    void CommOutput(const Variant& vOutput);

    bool Break();
    void Break(bool bBreak);
    bool CTSHolding();

    std::int32_t InputLen = 0;
    std::int32_t InputMode = 1;  ///< 0 text, 1 bytes
    std::int32_t RThreshold = 0;
    std::int32_t SThreshold = 0;
    bool RTSEnable = false;
    std::int32_t KestrelDefaultSerialTo = 0;
    std::int32_t KestrelDefaultPS2To = 0;
    std::int32_t KestrelDefaultHIDExTo = 0;

private:
    void open();
    void close();
    bool takesCommands();
    bool setRateAtOpening();
    bool readDirection();

    VellSession& session_;
    HidCommandChannel& channel_;
    ReaderCommands& commands_;
    Runtime& runtime_;
    const Cancel& cancel_;
    std::string commPort_;
    std::string openFailure_;
    bool directionRead_ = false;
    std::int32_t inBufferSize_ = 2048;
    std::int32_t outBufferSize_ = 2048;
};

}  // namespace corvane
