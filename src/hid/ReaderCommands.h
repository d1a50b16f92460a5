#pragma once

#include <cstdint>
#include <string>

#include "hid/HidCommandChannel.h"

namespace corvane {

/// The commands of a Kestrel reader, built on the command channel. False means refused, not answered or not sent.
class ReaderCommands {
public:
    explicit ReaderCommands(HidCommandChannel& channel) : channel_(channel) {}

    /// The rate of the reader's own serial side, in baud, 4 bytes, the most significant first. Throws RuntimeError
    /// overflow for a negative one.
    [[nodiscard]] bool SetHIDBaudrate(std::int32_t lBaudrate);

    /// The rate that the reader accepted last, or that was stored without asking it.
    std::int32_t baudRate() const { return baudRate_; }
    void baudRate(std::int32_t rate) { baudRate_ = rate; }

    [[nodiscard]] bool SetKestrelKeyCode(std::uint8_t bASCII, std::uint8_t bKeyCode, std::uint8_t bShift);

    /// Where the reader's input goes: the lowest bit of each counts.
    bool SetKestrelIODirect(std::int32_t bSerial, std::int32_t bPS2, std::int32_t bHIDEx);

    /// The reader's own direction, each 1 or 0. Nothing is written when it does not say.
    [[nodiscard]] bool GetKestrelDefaultIODirect(std::int32_t& bSerial, std::int32_t& bPS2, std::int32_t& bHIDEx);
    bool KestrelIsKeyboardExist() const { return keyboardPresent_; }  ///< as that answer said last

    std::string GetHIDVersion();  ///< 8-bit text; empty on failure
    bool KestrelDiscardBuffer();

    /// Asks for iSize bytes of a register (fewer when bBuffer ends before iStart + iSize), at most 8. True when some
    /// came; bBuffer keeps its contents.
    [[nodiscard]] bool KestrelGetRegister(std::int16_t iRegister, Bytes& bBuffer, std::int16_t iStart,
                                          std::int16_t iSize);

    /// Sends iSize bytes of bBuffer from iStart on to a register, at most 8.
    [[nodiscard]] bool KestrelSetRegister(std::int16_t iRegister, const Bytes& bBuffer, std::int16_t iStart,
                                          std::int16_t iSize);
    [[nodiscard]] bool KestrelEraseFlash(std::int16_t iFlashPage);

private:
    bool send(std::uint8_t code, const Bytes& parameters);

    HidCommandChannel& channel_;
    Bytes results_;
    std::int32_t baudRate_ = 19200;
    bool keyboardPresent_ = false;
};

}  // namespace corvane
