#pragma once

#include <QListWidget>

#include "app/PortList.h"

namespace corvane {

/// lstPorts, the ports and readers that exist, each with a mark whether it can be opened, and why not.
class PortsView : public QListWidget {
public:
    PortsView();
    void showRows(const std::vector<PortRow>& rows);
};

}  // namespace corvane
