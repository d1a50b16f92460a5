#pragma once

#include "platform/ProgramFolder.h"
#include "support/ScratchFolder.h"

namespace corvane::fakes {

/// A program's folder of its own for one test, on disk.
class FakeProgramFolder : public ProgramFolder {
public:
    ScratchFolder folder;

    std::string path() const override { return folder.path(); }
};

}  // namespace corvane::fakes
