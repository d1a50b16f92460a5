#pragma once

#include <QFrame>

#include "window/presenter/Card.h"

class QLabel;
class QVBoxLayout;

namespace corvane {

class CardText;

/// The card of the present state: labNotice, the sentence, with a symbol beside it, and txtVerdict, what stands below.
/// What a run needs (a bar, say) is put under it by whoever makes it.
class CardView : public QFrame {
public:
    CardView();

    void show(const Card& card);

    /// For more, at the bottom.
    QVBoxLayout* body() const { return body_; }
    QWidget* text() const;

    /// Leads a screen reader here, which then reads sentence and text.
    void takeFocus();

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setSizes(bool isLarge);
    void paintSymbol(QPainter& painter, const QRect& place) const;

    Card::Tone tone_ = Card::Tone::plain;
    QLabel* labNotice_;
    CardText* text_;
    QVBoxLayout* body_;
};

}  // namespace corvane
