#pragma once

#include <QWidget>

#include "window/presenter/Card.h"

namespace corvane {

/// picLink, the drawing at the window's top: the computer, the device, and the cable between them. It moves only when
/// somebody says that something has moved on, and needs no timer.
class LinkPicture : public QWidget {
public:
    LinkPicture();

    void show(Card::Cable cable);

    /// Something has moved on.
    void advance();

    QSize sizeHint() const override { return {320, 68}; }
    QSize minimumSizeHint() const override { return {200, 56}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintComputer(QPainter& painter, const QPointF& middle) const;
    void paintDevice(QPainter& painter, const QPointF& middle) const;
    void paintCable(QPainter& painter, const QPointF& from, const QPointF& to) const;

    Card::Cable cable_ = Card::Cable::ready;
    int step_ = 0;
};

}  // namespace corvane
