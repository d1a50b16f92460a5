#pragma once

#include "settings/Choices.h"
#include "site/InfReader.h"

namespace corvane {

/// Reads a local image's [INFO] header and its records into the image. False when the file has no ":" line or cannot
/// be read; the image is then unloaded and its program label says "Invalid File Format!!".
bool LoadHexInfo(InfReader& reader, const std::string& path, LocalImage& image);

}  // namespace corvane
