#pragma once

#include <cstdint>
#include <string>

#include "text/Variant.h"

namespace corvane {

/// One communication port, whatever is behind it; all traffic with a device goes through this interface. A read returns
/// the property, a write of the same name sets it. By itself it does nothing and returns False, 0 or an empty text.
/// The order of the members is part of the interface.
class clsIMScomm {
public:
    virtual ~clsIMScomm() = default;

    virtual bool Break() { return false; }
    virtual void Break(bool /*bBreak*/) {}
    virtual bool CDHolding() { return false; }
    virtual std::int32_t CommID() { return 0; }    ///< handle of the open port
    virtual std::string CommPort() { return {}; }  ///< port name, such as COM3
    virtual void CommPort(const std::string& /*szCommPort*/) {}
    virtual bool CTSHolding() { return false; }
    virtual bool DSRHolding() { return false; }
    virtual bool DTREnable() { return false; }
    virtual void DTREnable(bool /*bDTREnable*/) {}
    virtual bool EOFEnable() { return false; }
    virtual void EOFEnable(bool /*bEOFEnable*/) {}
    virtual std::int32_t HandShaking() { return 0; }
    virtual void HandShaking(std::int32_t /*lHandshake*/) {}
    virtual std::int32_t InBufferCount() { return 0; }              ///< bytes received and not read yet
    virtual void InBufferCount(std::int32_t /*lInBufferCount*/) {}  ///< 0 discards them
    virtual std::int32_t InBufferSize() { return 0; }
    virtual void InBufferSize(std::int32_t /*lInBufferSize*/) {}
    virtual Variant CommInput() { return {}; }     ///< a text in InputMode 0, bytes in InputMode 1
    virtual std::int32_t InputLen() { return 0; }  ///< how much one CommInput takes; 0 everything
    virtual void InputLen(std::int32_t /*lInputLen*/) {}
    virtual std::int32_t InputMode() { return 0; }
    virtual void InputMode(std::int32_t /*lInputMode*/) {}
    virtual bool NullDiscard() { return false; }
    virtual void NullDiscard(bool /*bNullDiscard*/) {}
    virtual std::int32_t OutBufferCount() { return 0; }  ///< bytes that are not sent yet
    virtual void OutBufferCount(std::int32_t /*lOutBufferCount*/) {}
    virtual std::int32_t OutBufferSize() { return 0; }
    virtual void OutBufferSize(std::int32_t /*lOutBufferSize*/) {}
    virtual void CommOutput(const Variant& /*vOutput*/) {}  ///< queues a text or bytes; may throw PortError
    virtual std::string ParityReplace() { return {}; }
    virtual void ParityReplace(const std::string& /*szParityReplace*/) {}
    virtual bool PortOpen() { return false; }

    /// Read it back to learn how it went. A serial port keeps its control's errors to itself; a HID reader's pass, such
    /// as a negative rate, which no reader can be told, or a port that is attached to nothing (RuntimeError).
    virtual void PortOpen(bool /*bPortOpen*/) {}
    virtual std::int32_t RThreshold() { return 0; }
    virtual void RThreshold(std::int32_t /*lRThreshold*/) {}
    virtual bool RTSEnable() { return false; }
    virtual void RTSEnable(bool /*bRTSEnable*/) {}
    virtual std::string Settings() { return {}; }                ///< "rate,parity,data bits,stop bits" in force
    virtual void Settings(const std::string& /*szSettings*/) {}  ///< the whole text or any of its fields
    virtual std::int32_t SThreshold() { return 0; }
    virtual void SThreshold(std::int32_t /*lSThreshold*/) {}
    virtual std::int32_t CommEvent() { return 0; }  ///< code of the latest event
    virtual bool IsMyCommPort(const std::string& /*szPortName*/) { return false; }
    virtual std::int32_t NumberOfCommPorts() { return 0; }                   ///< looks afresh which ports exist
    virtual std::string EnumCommPort(std::int32_t /*Index*/) { return {}; }  ///< zero-based; empty beyond the end
    virtual std::string EnumCommPortEx(std::int32_t /*Index*/) { return {}; }
};

}  // namespace corvane
