#include "window/widgets/PortsView.h"

#include <algorithm>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {

PortsView::PortsView() {
    named(this, "lstPorts", tr("Ports and readers"), tr("Where a device is searched for"));
    setToolTip({});
    setSelectionMode(NoSelection);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideRight);
    setFrameShape(NoFrame);
    setAcceptDrops(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void PortsView::showRows(const std::vector<PortRow>& rows) {
    clear();
    for (const auto& row : rows) {
        const bool canOpen = row.problem.empty();
        const auto problem = canOpen ? QString() : "  \u2013  " + QString::fromStdString(row.problem);
        auto* item = new QListWidgetItem(
            (canOpen ? "\u25cf  " : "\u2715  ") + QString::fromStdString(row.text()) + problem, this);
        item->setToolTip(plainToolTip(item->text()));
        item->setData(Qt::AccessibleTextRole,
                      QString::fromStdString(row.text()) + (canOpen ? tr(", can be opened") : problem));
    }
    if (rows.empty()) new QListWidgetItem(tr("Nothing is plugged in."), this);
    constexpr int kMostRows = 5;
    setFixedHeight(std::min(count(), kMostRows) * sizeHintForRow(0) + 2 * frameWidth() + 2);
}

}  // namespace corvane
