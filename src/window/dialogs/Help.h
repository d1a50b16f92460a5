#pragma once

#include <QWidget>

namespace corvane {

/// What an operator has to know, on one page over the window.
void showManual(QWidget* owner);

/// What this program is, in which version, under which license, and on which libraries it stands.
void showAbout(QWidget* owner);

}  // namespace corvane
