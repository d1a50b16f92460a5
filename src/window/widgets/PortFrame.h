#pragma once

#include <QFrame>
#include <functional>

#include "face/PortPanel.h"

class QHBoxLayout;
class QLabel;
class QPushButton;
class QScrollArea;

namespace corvane {

/// frameComport, the row of port buttons that shows during a scan: a click makes the scan go there next.
class PortFrame : public QFrame, public PortPanel {
public:
    PortFrame();

    std::function<void(int index)> onClick;
    std::function<bool(const std::string& port)> isScanned;             ///< whether a scan tries that port at all
    std::function<void(const std::string& port)> onRefused;             ///< the port did not open
    std::function<void(const std::vector<std::string>& names)> onScan;  ///< it begins, with these ports
    std::function<void()> onEnd;

    void showPorts(const std::vector<std::string>& names) override;
    void enablePort(int index, bool enabled) override;
    void hidePorts() override;
    void trying(const std::string& port, const std::string& settings) override;
    void portRefused(const std::string& port) override;

    /// The last control of the panel in the tab order.
    QPushButton* cmdMovePanel() const { return cmdMovePanel_; }

private:
    void addButton(int index, const std::string& name);
    void movePanel();

    QLabel* labTrying_;
    QScrollArea* area_;
    QHBoxLayout* row_;
    QPushButton* cmdMovePanel_;
    std::vector<QPushButton*> buttons_;  // by the scan's order; null where there is none
};

}  // namespace corvane
