#pragma once

#include <QFrame>

class QLabel;
class QVBoxLayout;

namespace corvane {

/// One of the numbered steps that lead through the window.
class StepBox : public QFrame {
public:
    StepBox(int number, const QString& title);

    /// Where the step's controls go.
    QVBoxLayout* body() const { return body_; }

    /// The step that the operator or the run is at stands out.
    void setCurrent(bool isCurrent);

private:
    QLabel* number_;
    QVBoxLayout* body_;
};

}  // namespace corvane
