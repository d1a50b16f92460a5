#pragma once

#include "hid/VellIO.h"
#include "ports/clsIMScomm.h"
#include "ports/clsMSCommEvent.h"
#include "text/RuntimeError.h"

namespace corvane {

/// A HID reader as a port of this program: hands every member to the control and keeps nothing itself. Errors of the
/// control reach the caller. It does not own what it is attached to; unattached, every member is an error.
class clsVellComm : public clsIMScomm {
public:
    ~clsVellComm() override;

    /// Takes over no settings, unlike a serial port.
    void Attach(VellIO* oVellIO, clsMSCommEvent* oMSCommEvent);

    bool Break() override { return control().Break(); }
    void Break(bool bBreak) override { control().Break(bBreak); }
    bool CDHolding() override { return control().CDHolding(); }
    std::int32_t CommID() override { return control().CommID(); }
    std::string CommPort() override { return control().CommPort(); }
    void CommPort(const std::string& szCommPort) override { control().CommPort(szCommPort); }
    bool CTSHolding() override { return control().CTSHolding(); }
    bool DSRHolding() override { return control().DSRHolding(); }
    bool DTREnable() override { return control().DTREnable(); }
    void DTREnable(bool bDTREnable) override { control().DTREnable(bDTREnable); }
    bool EOFEnable() override { return control().EOFEnable(); }
    void EOFEnable(bool bEOFEnable) override { control().EOFEnable(bEOFEnable); }
    std::int32_t HandShaking() override { return control().HandShaking(); }
    void HandShaking(std::int32_t lHandshake) override { control().HandShaking(lHandshake); }
    std::int32_t InBufferCount() override { return control().InBufferCount(); }
    void InBufferCount(std::int32_t lInBufferCount) override { control().InBufferCount(lInBufferCount); }
    std::int32_t InBufferSize() override { return control().InBufferSize(); }
    void InBufferSize(std::int32_t lInBufferSize) override { control().InBufferSize(lInBufferSize); }
    Variant CommInput() override { return control().CommInput(); }
    std::int32_t InputLen() override { return control().InputLen(); }
    void InputLen(std::int32_t lInputLen) override { control().InputLen(lInputLen); }
    std::int32_t InputMode() override { return control().InputMode(); }
    void InputMode(std::int32_t lInputMode) override { control().InputMode(lInputMode); }
    bool NullDiscard() override { return control().NullDiscard(); }
    void NullDiscard(bool bNullDiscard) override { control().NullDiscard(bNullDiscard); }
    std::int32_t OutBufferCount() override { return control().OutBufferCount(); }
    void OutBufferCount(std::int32_t lOutBufferCount) override { control().OutBufferCount(lOutBufferCount); }
    std::int32_t OutBufferSize() override { return control().OutBufferSize(); }
    void OutBufferSize(std::int32_t lOutBufferSize) override { control().OutBufferSize(lOutBufferSize); }
    void CommOutput(const Variant& vOutput) override { control().CommOutput(vOutput); }
    std::string ParityReplace() override { return control().ParityReplace(); }
    void ParityReplace(const std::string& szParityReplace) override { control().ParityReplace(szParityReplace); }
    bool PortOpen() override { return control().PortOpen(); }
    void PortOpen(bool bPortOpen) override { control().PortOpen(bPortOpen); }
    std::int32_t RThreshold() override { return control().RThreshold(); }
    void RThreshold(std::int32_t lRThreshold) override { control().RThreshold(lRThreshold); }
    bool RTSEnable() override { return control().RTSEnable(); }
    void RTSEnable(bool bRTSEnable) override { control().RTSEnable(bRTSEnable); }
    std::string Settings() override { return control().Settings(); }
    void Settings(const std::string& szSettings) override { control().Settings(szSettings); }
    std::int32_t SThreshold() override { return control().SThreshold(); }
    void SThreshold(std::int32_t lSThreshold) override { control().SThreshold(lSThreshold); }
    std::int32_t CommEvent() override { return control().CommEvent(); }
    bool IsMyCommPort(const std::string& szPortName) override { return control().IsMyCommPort(szPortName); }
    std::int32_t NumberOfCommPorts() override { return control().NumberOfCommPorts(); }
    std::string EnumCommPort(std::int32_t Index) override { return control().EnumCommPort(Index); }
    std::string EnumCommPortEx(std::int32_t Index) override { return control().EnumCommPortEx(Index); }

private:
    VellIO& control() const;

    VellIO* m_oVellComm = nullptr;
    clsMSCommEvent* m_oMSCommEvent = nullptr;
};

}  // namespace corvane
