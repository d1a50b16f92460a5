#pragma once

#include <QDialog>

#include "window/rehearsal/Rehearsal.h"

namespace corvane {

/// Asks what is to be practised.
class frmRehearsal : public QDialog {
public:
    explicit frmRehearsal(QWidget* owner = nullptr);

    const RehearsalKind& chosen() const { return rehearsalKinds()[chosen_]; }

private:
    std::size_t chosen_ = 0;
};

}  // namespace corvane
