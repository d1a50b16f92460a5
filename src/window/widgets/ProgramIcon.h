#pragma once

#include <QIcon>

namespace corvane {

/// The program's icon, drawn by itself: it is there also where nothing was installed, and no image plugin is needed.
QIcon programIcon();

}  // namespace corvane
