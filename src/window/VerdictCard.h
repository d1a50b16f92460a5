#pragma once

#include <QTextBrowser>

#include "app/Verdict.h"

namespace corvane {

/// txtVerdict, the card that says how the last run ended; its headline stands in the strip at the window's top.
class VerdictCard : public QTextBrowser {
public:
    VerdictCard();
    void showVerdict(const Verdict& verdict);

    /// As high as the text needs at the present width.
    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
};

}  // namespace corvane
