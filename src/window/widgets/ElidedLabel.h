#pragma once

#include <QLabel>

namespace corvane {

/// One line of text that somebody else wrote: as much of it as there is room for, and all of it as its tool tip. It
/// takes its room also while it is empty, so that nothing moves when it is filled.
class ElidedLabel : public QLabel {
public:
    explicit ElidedLabel(Qt::TextElideMode mode) : mode_(mode) {}

    void showText(const QString& text, const QString& toolTip = {});
    QSize sizeHint() const override { return QLabel::sizeHint().expandedTo(minimumSizeHint()); }
    QSize minimumSizeHint() const override { return {0, fontMetrics().lineSpacing()}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::TextElideMode mode_;
};

}  // namespace corvane
