#pragma once

#include <QListWidget>
#include <functional>

#include "face/RunView.h"

namespace corvane {

/// lstRefer: documents about the installed firmware, as high as they need up to some rows. One that leads nowhere is a
/// text.
class ReferenceList : public QListWidget {
public:
    ReferenceList();

    /// A link was clicked, or chosen with the keyboard.
    std::function<void(int index)> onOpen;

    void show(const std::vector<ReferenceLink>& links);
};

}  // namespace corvane
