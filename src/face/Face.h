#pragma once

#include <functional>

#include "face/Log.h"
#include "face/OperatorPrompts.h"
#include "face/PasswordPrompt.h"
#include "face/PortPanel.h"
#include "face/Progress.h"
#include "face/RunView.h"

namespace corvane {

/// What a face lends to the workflow: where it shows things and how it asks. The window has one, the console another.
struct Face {
    Log& log;
    Progress& progress;
    PortPanel& panel;
    PasswordPrompt& password;
    OperatorPrompts& prompts;
    RunView& view;
};

/// Puts something between the workflow and a face that sees what goes from one to the other. It outlives the workflow.
using FaceWitness = std::function<Face(const Face&)>;

}  // namespace corvane
