#pragma once

#include <QWidget>

namespace corvane {

/// Gives a control the name by which tests and scripts find it, and what a screen reader says about it.
template <typename Control>
Control* named(Control* control, const char* objectName, const QString& accessibleName = {},
               const QString& description = {}) {
    control->setObjectName(objectName);
    if (!accessibleName.isEmpty()) control->setAccessibleName(accessibleName);
    if (!description.isEmpty()) {
        control->setAccessibleDescription(description);
        control->setToolTip(description);
    }
    return control;
}

}  // namespace corvane
