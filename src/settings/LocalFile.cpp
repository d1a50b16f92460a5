#include "settings/LocalFile.h"

namespace corvane {
namespace {

/// A file with records in it.
ImageOrProblem loadLocalFile(const std::string& path, const Choices& choices, Digest& digest) {
    auto loaded = loadImage(path, digest, {.mostBytes = choices.mostImageBytes});
    if (loaded.image && loaded.image->records().empty()) return {std::nullopt, loaded.image->emptiness()};
    return loaded;
}

}  // namespace

bool LoadHexInfo(Choices& choices, const std::string& path, Digest& digest) {
    const auto loaded = loadLocalFile(path, choices, digest);
    choices.refusal = {};
    if (!loaded.image) choices.refusal = {path, loaded.problem};
    if (!loaded.image && !choices.image.isNone()) return false;
    choices.image = loaded.image.value_or(Image());
    choices.imageProblem = loaded.problem;
    return loaded.image.has_value();
}

void reloadLocalFile(Choices& choices, Digest& digest) {
    if (!choices.useFile || choices.image.isNone()) return;
    const auto loaded = loadLocalFile(choices.image.path(), choices, digest);
    if (loaded.image) choices.image = *loaded.image;
    choices.imageProblem = loaded.problem;
}

}  // namespace corvane
