#pragma once

#include <vector>

#include "platform/PortMap.h"
#include "platform/SerialControl.h"
#include "ports/clsIMScomm.h"
#include "ports/clsMSCommEvent.h"

namespace corvane {

/// A serial port as a port of this program. It keeps the line settings across closing, failed opening and the recovery
/// from framing errors, finds the ports that exist, and passes everything else to the control, whose errors reach the
/// caller; only PortOpen, CommPort and IsMyCommPort swallow them. It owns neither the map nor what it is attached to.
class clsMSComm : public clsIMScomm {
public:
    explicit clsMSComm(PortMap& map) : map_(map) {}
    ~clsMSComm() override;

    /// Takes the control's settings as the ones to remember; without a control, the default ones.
    void Attach(SerialControl* oMSComm, clsMSCommEvent* oMSCommEvent);

    /// The settings on an open port's handle; empty when they cannot be read or have no name here.
    std::string GetCOMMSettings(std::int32_t handle);

    /// Checks all four fields first; False when one is wrong or the line refuses.
    bool SetCOMMSettings(std::int32_t handle, const std::string& szSettings);

    /// "message(0xCODE)"; empty when the system has no message.
    std::string GetSystemErrorText(std::uint32_t code);

    bool Break() override { return control().Break(); }
    void Break(bool bBreak) override { control().Break(bBreak); }
    bool CDHolding() override { return control().CDHolding(); }
    void CDHolding(bool bCDHolding) { control().CDHolding(bCDHolding); }
    std::int32_t CommID() override { return control().CommID(); }
    std::string CommPort() override;
    void CommPort(const std::string& szCommPort) override;
    bool CTSHolding() override { return control().CTSHolding(); }
    void CTSHolding(bool bCTSHolding) { control().CTSHolding(bCTSHolding); }
    bool DSRHolding() override { return control().DSRHolding(); }
    void DSRHolding(bool bDSRHolding) { control().DSRHolding(bDSRHolding); }
    bool DTREnable() override { return control().DTREnable(); }
    void DTREnable(bool bDTREnable) override;
    bool EOFEnable() override { return control().EOFEnable(); }
    void EOFEnable(bool bEOFEnable) override { control().EOFEnable(bEOFEnable); }
    std::int32_t HandShaking() override { return control().HandShaking(); }
    void HandShaking(std::int32_t lHandshake) override { control().HandShaking(lHandshake); }
    std::int32_t InBufferCount() override { return control().InBufferCount(); }
    void InBufferCount(std::int32_t lInBufferCount) override { control().InBufferCount(lInBufferCount); }
    std::int32_t InBufferSize() override { return control().InBufferSize(); }
    void InBufferSize(std::int32_t lInBufferSize) override { control().InBufferSize(lInBufferSize); }
    Variant CommInput() override { return control().Input(); }
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
    void CommOutput(const Variant& vOutput) override { control().Output(vOutput); }
    std::string ParityReplace() override { return control().ParityReplace(); }
    void ParityReplace(const std::string& szParityReplace) override { control().ParityReplace(szParityReplace); }
    bool PortOpen() override { return control().PortOpen(); }
    void PortOpen(bool bPortOpen) override;
    std::int32_t RThreshold() override { return control().RThreshold(); }
    void RThreshold(std::int32_t lRThreshold) override { control().RThreshold(lRThreshold); }
    bool RTSEnable() override { return control().RTSEnable(); }
    void RTSEnable(bool bRTSEnable) override;
    std::string Settings() override;
    void Settings(const std::string& szSettings) override;
    std::int32_t SThreshold() override { return control().SThreshold(); }
    void SThreshold(std::int32_t lSThreshold) override { control().SThreshold(lSThreshold); }
    std::int32_t CommEvent() override { return control().CommEvent(); }
    bool IsMyCommPort(const std::string& szPortName) override;
    std::int32_t NumberOfCommPorts() override;
    std::string EnumCommPort(std::int32_t Index) override;
    std::string EnumCommPortEx(std::int32_t Index) override;

private:
    SerialControl& control() const;
    void reapplySettings();
    void restoreSettings();
    void onControlEvent();

    PortMap& map_;
    SerialControl* m_oMSComm = nullptr;
    clsMSCommEvent* m_oMSCommEvent = nullptr;
    std::string m_szSettings = "19200,N,8,1";
    std::vector<std::string> m_aszPorts;
    bool m_bPortsFresh = false;
    std::int32_t m_lPortCount = 0;
};

}  // namespace corvane
