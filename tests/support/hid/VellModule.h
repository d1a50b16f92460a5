#pragma once

#include "support/FakeModuleLoader.h"
#include "vellio/vellio.h"

namespace corvane::fakes {

/// The real transport library, over the FakeHidBus of the test: one export of each of its files, or they would not be
/// linked; the others are found in the test program.
inline FakeModuleLoader::Exports vellModule() {
    return {{"vellCreate", reinterpret_cast<void*>(&vellCreate)}, {"vellRead", reinterpret_cast<void*>(&vellRead)}};
}

}  // namespace corvane::fakes
