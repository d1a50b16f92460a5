#pragma once

#include <string>

#include "platform/Digest.h"
#include "settings/Choices.h"

namespace corvane {

/// Takes a file (the system's bytes) as the local image. False when it has no ":" line or cannot be read, and the
/// choices say why: in refusal when an image had been chosen before, which stays, else in imageProblem.
[[nodiscard]] bool LoadHexInfo(Choices& choices, const std::string& path, Digest& digest);

/// Reads the chosen file again, for a run that is about to begin: it may have been built anew since it was chosen, and
/// from here on the run opens it no more. When it cannot be read any longer, or holds no image, the choice stays as it
/// was shown and the problem says why it cannot be installed. Does nothing when the local file is not what is wanted.
void reloadLocalFile(Choices& choices, Digest& digest);

}  // namespace corvane
