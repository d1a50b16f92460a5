#pragma once

#include <string>

namespace corvane {

/// Shared objects by path. A module is an opaque handle, null when there is none; each non-null one that open or opened
/// gave is one reference, which release gives back.
class ModuleLoader {
public:
    using Module = void*;

    virtual ~ModuleLoader() = default;

    /// Loads the file; null when it is missing or no shared object.
    virtual Module open(const std::string& path) = 0;

    /// The same if the file is loaded already, else null.
    virtual Module opened(const std::string& path) = 0;

    /// The address of an exported function, null when there is none of that name.
    virtual void* lookUp(Module module, const std::string& name) = 0;
    virtual void release(Module module) = 0;

    /// Why the last open gave null, in the system's words; empty when it did not.
    virtual std::string problem() const { return {}; }
};

}  // namespace corvane
