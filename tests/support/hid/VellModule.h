#pragma once

#include "support/FakeModuleLoader.h"

namespace corvane::fakes {

/// The exports of the real transport library, over the FakeHidBus of the test.
FakeModuleLoader::Exports vellModule();

}  // namespace corvane::fakes
