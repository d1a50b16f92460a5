#pragma once

#include "hid/VellIO.h"
#include "ports/ForwardedPort.h"
#include "ports/clsMSCommEvent.h"
#include "text/RuntimeError.h"

namespace corvane {

/// A HID reader as a port of this program: hands every member to the control and keeps nothing itself. Errors of the
/// control reach the caller. It does not own what it is attached to; unattached, every member is an error.
class clsVellComm : public ForwardedPort<VellIO> {
public:
    ~clsVellComm() override;

    /// Takes over no settings, unlike a serial port.
    void Attach(VellIO* oVellIO, clsMSCommEvent* oMSCommEvent);

    std::string CommPort() override { return control().CommPort(); }
    void CommPort(const std::string& szCommPort) override { control().CommPort(szCommPort); }
    Variant CommInput() override { return control().CommInput(); }
    void CommOutput(const Variant& vOutput) override { control().CommOutput(vOutput); }
    bool IsMyCommPort(const std::string& szPortName) override { return control().IsMyCommPort(szPortName); }
    std::int32_t NumberOfCommPorts() override { return control().NumberOfCommPorts(); }
    std::string EnumCommPort(std::int32_t Index) override { return control().EnumCommPort(Index); }
    std::string EnumCommPortEx(std::int32_t Index) override { return control().EnumCommPortEx(Index); }

private:
    VellIO& control() const override;

    VellIO* m_oVellComm = nullptr;
    clsMSCommEvent* m_oMSCommEvent = nullptr;
};

}  // namespace corvane
