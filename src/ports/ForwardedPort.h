#pragma once

#include "ports/clsIMScomm.h"

namespace corvane {

/// What both kinds of port have in common: a member that only hands over the control's own member of that name. What
/// a kind does in its own way, and whatever its control names differently, stands in the class itself.
template <typename Control>
class ForwardedPort : public clsIMScomm {
public:
    bool Break() override { return control().Break(); }
    void Break(bool bBreak) override { control().Break(bBreak); }
    bool CDHolding() override { return control().CDHolding(); }
    std::int32_t CommID() override { return control().CommID(); }
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

protected:
    /// What the port is attached to; error 91 when that is nothing.
    virtual Control& control() const = 0;
};

}  // namespace corvane
