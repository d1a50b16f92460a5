#pragma once

#include <QColor>
#include <QPalette>

#include "window/presenter/Card.h"

namespace corvane {

/// The colour of a tone that stands out against that palette, dark or light.
QColor toneColour(Card::Tone tone, const QPalette& palette);

/// A colour between two, the share of the second being 0 to 1.
QColor mixed(const QColor& one, const QColor& other, double share);

/// The colour of lines and frames: seen on every palette, and quieter than text.
QColor lineColour(const QPalette& palette);

}  // namespace corvane
