#pragma once

#include "platform/files/ProgramFolder.h"
#include "support/ScratchFolder.h"

namespace corvane::fakes {

/// A program's folder of its own for one test, on disk.
class FakeProgramFolder : public ProgramFolder {
public:
    ScratchFolder folder;

    ScratchFolder data;
    bool hasNoRoom = false;

    std::string path() const override { return folder.path(); }
    std::string dataPath() const override { return data.at("Corvane"); }
    std::string privateFolder() const override {
        if (hasNoRoom) return {};
        std::filesystem::create_directory(data.at("private"));
        return data.at("private");
    }
};

}  // namespace corvane::fakes
