#include "hid/ReaderCommands.h"

#include <algorithm>
#include <optional>

#include "text/Number.h"
#include "text/RuntimeError.h"

namespace corvane {
namespace {

constexpr std::int32_t kMostRegisterBytes = 8;

enum Command : std::uint8_t {
    kSetBaudrate = 1,
    kSetKeyCode = 2,
    kSetIODirect = 3,
    kGetVersion = 4,
    kGetDefaultIODirect = 5,
    kGetRegister = 9,
    kSetRegister = 10,
    kEraseFlash = 11,
    kDiscardBuffer = 203
};

std::uint8_t lowestBit(std::int32_t value) { return static_cast<std::uint8_t>(value & 1); }

/// How many bytes from start on are meant; nothing when none can be.
std::optional<std::int32_t> registerSize(const Bytes& buffer, std::int32_t start, std::int32_t size) {
    const auto count = static_cast<std::int32_t>(buffer.size());
    if (buffer.empty() || start < 0) return std::nullopt;
    if (start + size > count) size = count - start;
    if (size < 0 || size > kMostRegisterBytes) return std::nullopt;
    return size;
}

/// Readers expect the rounded quotient as the high byte, so the upper half of each 256 registers is named one too high.
Bytes registerAddress(std::int16_t iRegister, std::int32_t size) {
    const auto high = static_cast<std::int32_t>(roundToEven(iRegister / 256.0));
    return {static_cast<std::uint8_t>(iRegister), static_cast<std::uint8_t>(high), static_cast<std::uint8_t>(size)};
}

}  // namespace

bool ReaderCommands::send(std::uint8_t code, const Bytes& parameters) {
    return channel_.SendHIDCMD(code, parameters, results_);
}

bool ReaderCommands::SetHIDBaudrate(std::int32_t lBaudrate) {
    if (lBaudrate < 0) throw RuntimeError::overflow();
    Bytes parameters(4);
    std::int32_t rest = lBaudrate;
    for (auto byte = parameters.rbegin(); byte != parameters.rend(); ++byte, rest /= 256) {
        *byte = static_cast<std::uint8_t>(rest % 256);
    }
    if (!send(kSetBaudrate, parameters)) return false;
    baudRate_ = lBaudrate;
    return true;
}

bool ReaderCommands::SetKestrelKeyCode(std::uint8_t bASCII, std::uint8_t bKeyCode, std::uint8_t bShift) {
    return send(kSetKeyCode, {bASCII, bKeyCode, bShift});
}

bool ReaderCommands::SetKestrelIODirect(std::int32_t bSerial, std::int32_t bPS2, std::int32_t bHIDEx) {
    const int direction = lowestBit(bSerial) | lowestBit(bPS2) << 1 | lowestBit(bHIDEx) << 2;
    return send(kSetIODirect, {static_cast<std::uint8_t>(direction)});
}

bool ReaderCommands::GetKestrelDefaultIODirect(std::int32_t& bSerial, std::int32_t& bPS2, std::int32_t& bHIDEx) {
    if (!send(kGetDefaultIODirect, {}) || results_.empty()) return false;
    const std::uint8_t answer = results_[0];
    keyboardPresent_ = (answer & 16) != 0;
    const bool serial = (answer & 1) != 0;
    bSerial = serial ? 1 : 0;
    bPS2 = serial ? lowestBit(answer >> 1) : 1;
    bHIDEx = serial ? lowestBit(answer >> 2) : 1;
    return true;
}

std::string ReaderCommands::GetHIDVersion() {
    if (!send(kGetVersion, {})) return {};
    return {results_.begin(), std::find(results_.begin(), results_.end(), 0)};
}

bool ReaderCommands::KestrelDiscardBuffer() { return send(kDiscardBuffer, {}); }

bool ReaderCommands::KestrelGetRegister(std::int16_t iRegister, Bytes& bBuffer, std::int16_t iStart,
                                        std::int16_t iSize) {
    const auto size = registerSize(bBuffer, iStart, iSize);
    if (!size || !send(kGetRegister, registerAddress(iRegister, *size)) || results_.empty()) return false;
    // Copied from the caller's buffer and not into it: given, and callers count on finding theirs as it was.
    const auto count = std::min(static_cast<std::size_t>(*size), results_.size());
    std::copy_n(bBuffer.begin() + iStart, count, results_.begin());
    return true;
}

bool ReaderCommands::KestrelSetRegister(std::int16_t iRegister, const Bytes& bBuffer, std::int16_t iStart,
                                        std::int16_t iSize) {
    const auto size = registerSize(bBuffer, iStart, iSize);
    if (!size) return false;
    Bytes parameters = registerAddress(iRegister, *size);
    parameters.insert(parameters.end(), bBuffer.begin() + iStart, bBuffer.begin() + iStart + *size);
    return send(kSetRegister, parameters);
}

bool ReaderCommands::KestrelEraseFlash(std::int16_t iFlashPage) { return send(kEraseFlash, {lowestBit(iFlashPage)}); }

}  // namespace corvane
