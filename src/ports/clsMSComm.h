#pragma once

#include <vector>

#include "platform/PortMap.h"
#include "platform/SerialControl.h"
#include "ports/ForwardedPort.h"
#include "ports/clsMSCommEvent.h"

namespace corvane {

/// A serial port as a port of this program. It keeps the line settings across closing, failed opening and the recovery
/// from framing errors, finds the ports that exist, and passes everything else to the control, whose errors reach the
/// caller; only PortOpen, CommPort and IsMyCommPort swallow them. It owns neither the map nor what it is attached to.
class clsMSComm : public ForwardedPort<SerialControl> {
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

    // The inputs can be set here too: the control refuses it.
    using ForwardedPort::CDHolding;
    using ForwardedPort::CTSHolding;
    using ForwardedPort::DSRHolding;
    void CDHolding(bool bCDHolding) { control().CDHolding(bCDHolding); }
    void CTSHolding(bool bCTSHolding) { control().CTSHolding(bCTSHolding); }
    void DSRHolding(bool bDSRHolding) { control().DSRHolding(bDSRHolding); }

    std::string CommPort() override;
    void CommPort(const std::string& szCommPort) override;
    Variant CommInput() override { return control().Input(); }
    void CommOutput(const Variant& vOutput) override { control().Output(vOutput); }
    using ForwardedPort::DTREnable;
    void DTREnable(bool bDTREnable) override;
    using ForwardedPort::PortOpen;
    void PortOpen(bool bPortOpen) override;
    using ForwardedPort::RTSEnable;
    void RTSEnable(bool bRTSEnable) override;
    std::string Settings() override;
    void Settings(const std::string& szSettings) override;
    bool IsMyCommPort(const std::string& szPortName) override;
    std::int32_t NumberOfCommPorts() override;
    std::string EnumCommPort(std::int32_t Index) override;
    std::string EnumCommPortEx(std::int32_t Index) override;

private:
    SerialControl& control() const override;
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
