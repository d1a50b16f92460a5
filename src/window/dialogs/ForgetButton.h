#pragma once

#include <QPushButton>
#include <functional>
#include <vector>

#include "run/RunJournal.h"

class QMenu;

namespace corvane {

/// Takes a device off the list of those that were left, after asking once: cmdForget. With several of them it opens a
/// list first. It is hidden while there is none.
class ForgetButton : public QPushButton {
public:
    ForgetButton();

    /// The operator agreed.
    std::function<void(const InterruptedRun& run)> onForget;

    void offer(const std::vector<InterruptedRun>& left);

private:
    void ask(const InterruptedRun& run);

    std::vector<InterruptedRun> left_;
    QMenu* menu_;
};

}  // namespace corvane
