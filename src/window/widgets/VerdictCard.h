#pragma once

#include <QTextBrowser>

#include "run/Verdict.h"

namespace corvane {

/// txtVerdict, the card that says how the last run ended; its headline stands in the strip at the window's top.
class VerdictCard : public QTextBrowser {
public:
    VerdictCard();

    /// With what was advised during the run, which comes first.
    void showVerdict(const Verdict& verdict, const QStringList& advice);

    /// As high as the text needs at the present width.
    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
};

}  // namespace corvane
