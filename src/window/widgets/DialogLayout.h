#pragma once

#include <QSize>

class QDialog;
class QLayout;
class QWidget;

namespace corvane {

/// Arranges a dialog: its content, which can be scrolled where the screen is too small for it, and its buttons, which
/// are always there. The dialog owns both then. At least that large if the screen is.
void arrangeDialog(QDialog& dialog, QLayout* content, QWidget* buttons, QSize least);

/// Such a size, as far as the screen has room for it and the window's frame.
void resizeOnScreen(QWidget& window, QSize size);

}  // namespace corvane
