#include "window/widgets/DialogLayout.h"

#include <QDialog>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace corvane {
namespace {

/// As high as its content, where that is no higher than may be.
class Scroller : public QScrollArea {
public:
    explicit Scroller(QLayout* content) {
        auto* page = new QWidget;
        content->setContentsMargins(0, 0, 0, 0);
        page->setLayout(content);
        setWidget(page);
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::NoFocus);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    }

    QSize minimumSizeHint() const override {
        return {widget()->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width(),
                4 * fontMetrics().lineSpacing()};
    }

    int heightFor(int width) const {
        auto* layout = widget()->layout();
        return layout->hasHeightForWidth() ? layout->totalHeightForWidth(width) : layout->totalSizeHint().height();
    }
};

}  // namespace

void arrangeDialog(QDialog& dialog, QLayout* content, QWidget* buttons, QSize least) {
    auto* scroller = new Scroller(content);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(scroller, 1);
    layout->addWidget(buttons);
    const auto margins = layout->contentsMargins();
    const int inner = std::max(least.width() - margins.left() - margins.right(), scroller->minimumSizeHint().width());
    const QSize needed(inner + margins.left() + margins.right(), scroller->heightFor(inner) + layout->spacing() +
                                                                     buttons->sizeHint().height() + margins.top() +
                                                                     margins.bottom());
    resizeOnScreen(dialog, least.expandedTo(needed));
}

void resizeOnScreen(QWidget& window, QSize size) {
    constexpr QSize kFrame(8, 40);
    window.resize(size.boundedTo(window.screen()->availableSize() - kFrame));
}

}  // namespace corvane
