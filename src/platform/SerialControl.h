#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "text/RuntimeError.h"
#include "text/SettingsText.h"
#include "text/Variant.h"

namespace corvane {

/// What a serial control throws. Numbers are those that programs for such controls know.
class PortError : public RuntimeError {
public:
    using RuntimeError::RuntimeError;

    static PortError notWhileOpen() { return {8000, "Operation not valid while the port is open"}; }
    static PortError invalidPort() { return {8002, "Invalid port number"}; }
    static PortError alreadyOpen() { return {8005, "Port already open"}; }
    static PortError notOpen() { return {8012, "The device is not open"}; }
    static PortError onlyWhileOpen() { return {8018, "Operation valid only when the port is open"}; }
    static PortError lost() { return {8020, "The port was lost"}; }
    static PortError invalidValue() { return {380, "Invalid property value"}; }
};

/// Event codes of a serial control that this program acts on or raises.
enum CommEventCode : std::int32_t {
    kSendEvent = 1,     ///< fewer than SThreshold bytes are left to send
    kReceiveEvent = 2,  ///< RThreshold bytes have come in
    kCtsEvent = 3,      ///< clear-to-send changed
    kEofEvent = 7,      ///< the end-of-file character 0x1A has come in
    kFramingError = 1004,
    kReceiveOverflow = 1008,
    kSendFull = 1010,
};

/// Why the last opening failed, for advice to the operator.
struct OpenFailure {
    enum class Kind { none, notThere, noPermission, inUse, noSerialPort, other };
    Kind kind = Kind::none;
    std::string path;  ///< the device node, in the system's bytes
    int systemError = 0;
};

/// The serial-port control: a port's properties over the system's device. A read returns the property, a write with the
/// same name sets it. Everything may throw PortError unless it says otherwise. On a port that was lost (unplugged)
/// PortOpen turns False at once, Input gives nothing, the counts are 0, and Output throws, until it is opened or
/// closed. On a closed port the counts are 0, discarding does nothing, Input, Output and Break throw.
class SerialControl {
public:
    virtual ~SerialControl() = default;

    /// Called from DoEvents after a communication event; CommEvent tells which.
    std::function<void()> OnComm;

    /// The port's number; cannot be changed while the port is open.
    virtual std::int16_t CommPort() const = 0;
    virtual void CommPort(std::int16_t number) = 0;

    /// Opening takes the port for this program alone and applies Settings, RTSEnable, DTREnable and HandShaking. Both
    /// opening an open port and closing a closed one throw; closing drops what is not on the line yet.
    virtual bool PortOpen() = 0;
    virtual void PortOpen(bool open) = 0;
    virtual OpenFailure openFailure() const = 0;

    /// Whether there is a line whose rate says how long bytes take; a pseudo-terminal has none.
    virtual bool hasLine() const { return true; }

    /// "rate,parity,data bits,stop bits" as it was last written here, whatever SetCommState has done since; a write to
    /// an open port applies it to the line. What is no such text, or more than the line can do, throws and changes
    /// nothing.
    virtual std::string Settings() const = 0;
    virtual void Settings(const std::string& settings) = 0;

    /// The open port's handle for the two calls below; -1 when it is closed.
    virtual std::int32_t CommID() = 0;

    /// The line as it is, with the rate that was asked for where the line's own comes close to it. SetCommState changes
    /// these four and nothing else, and is False when the line cannot do them. Neither throws; after a False
    /// GetLastError has the system's number.
    virtual bool GetCommState(std::int32_t handle, CommState& state) = 0;
    virtual bool SetCommState(std::int32_t handle, const CommState& state) = 0;
    virtual std::uint32_t GetLastError() const = 0;

    /// The system's words for one of its numbers, line ends included where it gives any; empty for an unknown one.
    virtual std::string FormatMessage(std::uint32_t code) const = 0;

    /// Received data: text in InputMode 0, bytes in InputMode 1; at most InputLen of them, all when that is 0.
    virtual Variant Input() = 0;
    virtual std::int32_t InBufferCount() = 0;
    virtual void InBufferCount(std::int32_t count) = 0;  ///< 0 discards
    virtual std::int32_t InBufferSize() const = 0;
    virtual void InBufferSize(std::int32_t size) = 0;
    virtual std::int32_t InputLen() const = 0;
    virtual void InputLen(std::int32_t length) = 0;
    virtual std::int32_t InputMode() const = 0;
    virtual void InputMode(std::int32_t mode) = 0;

    /// Queues a text or bytes and returns at once.
    virtual void Output(const Variant& data) = 0;
    virtual std::int32_t OutBufferCount() = 0;  ///< bytes that are not on the line yet
    virtual void OutBufferCount(std::int32_t count) = 0;
    virtual std::int32_t OutBufferSize() const = 0;
    virtual void OutBufferSize(std::int32_t size) = 0;

    virtual std::int32_t RThreshold() const = 0;  ///< bytes received that raise an event; 0 none
    virtual void RThreshold(std::int32_t count) = 0;
    virtual std::int32_t SThreshold() const = 0;  ///< bytes left to send below which one is raised; 0 none
    virtual void SThreshold(std::int32_t count) = 0;
    virtual std::int32_t CommEvent() const = 0;

    virtual bool Break() const = 0;
    virtual void Break(bool on) = 0;
    virtual bool RTSEnable() const = 0;
    virtual void RTSEnable(bool on) = 0;
    virtual bool DTREnable() const = 0;
    virtual void DTREnable(bool on) = 0;
    virtual bool CDHolding() = 0;
    virtual void CDHolding(bool) { throw PortError::invalidValue(); }  ///< inputs cannot be set
    virtual bool CTSHolding() = 0;
    virtual void CTSHolding(bool) { throw PortError::invalidValue(); }
    virtual bool DSRHolding() = 0;
    virtual void DSRHolding(bool) { throw PortError::invalidValue(); }
    virtual bool EOFEnable() const = 0;
    virtual void EOFEnable(bool on) = 0;
    virtual std::int32_t HandShaking() const = 0;  ///< 0 none, 1 XON/XOFF, 2 RTS/CTS, 3 both
    virtual void HandShaking(std::int32_t mode) = 0;
    virtual bool NullDiscard() const = 0;
    virtual void NullDiscard(bool on) = 0;
    virtual std::string ParityReplace() const = 0;
    virtual void ParityReplace(const std::string& character) = 0;
};

}  // namespace corvane
