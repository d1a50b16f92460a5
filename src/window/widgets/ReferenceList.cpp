#include "window/widgets/ReferenceList.h"

#include <algorithm>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {

ReferenceList::ReferenceList() {
    named(this, "lstRefer", tr("Reference links"), tr("Documents about the installed firmware"));
    // Else some styles activate a link at a click and others at a second one.
    setStyleSheet("QListWidget { activate-on-singleclick: 1; }");
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideRight);
    connect(this, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
        if (onOpen) onOpen(item->data(Qt::UserRole).toInt());
    });
}

void ReferenceList::show(const std::vector<ReferenceLink>& links) {
    clear();
    for (const auto& link : links) {
        auto* item = new QListWidgetItem(fromDevice(link.title), this);
        item->setData(Qt::UserRole, link.index);
        item->setToolTip(plainToolTip(item->text()));
        if (!link.leads) continue;
        item->setForeground(palette().link());
        auto font = item->font();
        font.setUnderline(true);
        item->setFont(font);
    }
    constexpr int kRows = 4;
    setFixedHeight(std::clamp(count(), 1, kRows) * sizeHintForRow(0) + 2 * frameWidth());
}

}  // namespace corvane
