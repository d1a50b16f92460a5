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

/// The same for a label: a screen reader says its text, and then what the text is about.
template <typename Label>
Label* namedLabel(Label* label, const char* objectName, const QString& about) {
    label->setAccessibleDescription(about);
    return named(label, objectName);
}

}  // namespace corvane
