#include "ports/clsVellComm.h"

namespace corvane {

clsVellComm::~clsVellComm() {
    if (m_oVellComm) m_oVellComm->OnComm = nullptr;
}

void clsVellComm::Attach(VellIO* oVellIO, clsMSCommEvent* oMSCommEvent) {
    if (m_oVellComm) m_oVellComm->OnComm = nullptr;
    m_oVellComm = oVellIO;
    m_oMSCommEvent = oMSCommEvent;
    if (!oVellIO) return;
    oVellIO->OnComm = [this] {
        if (m_oMSCommEvent) m_oMSCommEvent->RaiseOnComm();
    };
}

VellIO& clsVellComm::control() const {
    if (!m_oVellComm) throw RuntimeError(91, "No HID control is attached");
    return *m_oVellComm;
}

}  // namespace corvane
