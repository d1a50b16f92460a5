#include "window/widgets/PortFrame.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

#include "window/widgets/Naming.h"
#include "window/widgets/QtText.h"

namespace corvane {

PortFrame::PortFrame() {
    named(this, "frameComport", tr("Ports"));
    labTrying_ = new QLabel;
    labTrying_->setObjectName("labTrying");
    auto* hint = new QLabel(tr("Click a port to search there next."));

    auto* buttons = new QWidget;
    row_ = new QHBoxLayout(buttons);
    row_->setContentsMargins(0, 0, 0, 0);
    row_->setSizeConstraint(QLayout::SetMinAndMaxSize);
    area_ = new QScrollArea;
    area_->setFrameShape(QFrame::NoFrame);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setFocusPolicy(Qt::NoFocus);
    area_->setWidget(buttons);

    cmdMovePanel_ = named(new QPushButton(tr("&More")), "cmdMovePanel", tr("More ports"), tr("Shows the next ports"));
    cmdMovePanel_->setEnabled(false);
    area_->setFixedHeight(cmdMovePanel_->sizeHint().height());

    auto* ports = new QHBoxLayout;
    ports->addWidget(area_, 1);
    ports->addWidget(cmdMovePanel_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(labTrying_);
    layout->addLayout(ports);
    layout->addWidget(hint);

    connect(cmdMovePanel_, &QPushButton::clicked, this, [this] { movePanel(); });
    connect(area_->horizontalScrollBar(), &QScrollBar::rangeChanged, this,
            [this](int, int most) { cmdMovePanel_->setEnabled(most > 0); });
}

void PortFrame::showPorts(const std::vector<std::string>& names) {
    for (auto* button : buttons_) delete button;
    buttons_.clear();
    for (std::size_t i = 0; i < names.size(); ++i) addButton(static_cast<int>(i), names[i]);
    labTrying_->clear();
    area_->horizontalScrollBar()->setValue(0);
    onScan(names);
}

void PortFrame::addButton(int index, const std::string& name) {
    const auto port = fromDevice(name);
    const bool scanned = name.empty() || isScanned(name);
    auto caption = scanned ? port : tr("%1 (not scanned)").arg(port);
    auto* button = new QPushButton(caption.replace('&', "&&"));
    if (!name.empty())  // the order's empty entry is never seen, and nothing is said of it
        named(button, "", port,
              scanned ? tr("Searches on %1 next").arg(port) : tr("The search leaves %1 out").arg(port));
    button->setObjectName("cmdComport" + QString::number(index));
    button->setFixedWidth(button->fontMetrics().horizontalAdvance(caption) + 20);
    button->setEnabled(scanned);
    button->setVisible(!name.empty());
    connect(button, &QPushButton::clicked, this, [this, index] { onClick(index); });
    row_->addWidget(button);
    QWidget::setTabOrder(cmdMovePanel_->previousInFocusChain(), button);
    if (!name.empty()) button->show();
    buttons_.push_back(button);
}

void PortFrame::enablePort(int index, bool enabled) {
    if (index >= 0 && index < static_cast<int>(buttons_.size()))
        buttons_[static_cast<std::size_t>(index)]->setEnabled(enabled);
}

void PortFrame::hidePorts() { onEnd(); }

void PortFrame::trying(const std::string& port, const std::string& settings) {
    labTrying_->setText(tr("Trying %1 at %2").arg(fromDevice(port), fromDevice(settings)));
}

void PortFrame::portRefused(const std::string& port) { onRefused(port); }

/// To the ports that are not wholly seen yet, and from the last ones back to the first.
void PortFrame::movePanel() {
    auto* bar = area_->horizontalScrollBar();
    const int end = bar->value() + bar->pageStep();
    const auto cut =
        std::find_if(buttons_.begin(), buttons_.end(), [&](const auto* one) { return one->geometry().right() >= end; });
    const bool isNext = cut != buttons_.end() && (*cut)->x() > bar->value();  // else it is wider than the panel
    bar->setValue(bar->value() >= bar->maximum() ? 0 : isNext ? (*cut)->x() : end);
}

}  // namespace corvane
