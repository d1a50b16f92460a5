#pragma once

#include <string>

#include "platform/linux/trust/SodiumSignatures.h"
#include "support/ScratchFolder.h"

namespace corvane::fakes {

/// A file that the minisign command has made, or signed: see signed/make.sh.
inline std::string signedFile(const std::string& name) {
    return ScratchFolder::content(CORVANE_SIGNED_FILES "/" + name);
}

/// SHA-256 of the image there, which is kImage.
inline constexpr char kImageDigest[] = "4673f95cf2e7beabb35d1f8a04e3e1c3d251df79035545e6e2f3463857a4c8cd";

}  // namespace corvane::fakes
