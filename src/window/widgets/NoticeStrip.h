#pragma once

#include <QLabel>

#include "window/presenter/RunNotice.h"

namespace corvane {

/// labNotice, the strip at the window's top. Its colours are its own, so that they read the same on every palette.
class NoticeStrip : public QLabel {
public:
    NoticeStrip();
    void say(const RunNotice& notice);
};

}  // namespace corvane
