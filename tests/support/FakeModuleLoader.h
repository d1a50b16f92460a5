#pragma once

#include <map>
#include <string>

#include "platform/ModuleLoader.h"

namespace corvane::fakes {

/// Modules that exist by path, each with its exported functions. Fails the test when a handle is used or released that
/// is not open, and, at its end, when one was never released.
class FakeModuleLoader : public ModuleLoader {
public:
    using Exports = std::map<std::string, void*>;

    ~FakeModuleLoader() override;

    /// A file to load. Give each function as reinterpret_cast<void*>(&function).
    void provide(const std::string& path, Exports exports) { files_[path].exports = std::move(exports); }

    /// Another part of the program holds it, as if it had been opened before.
    void load(const std::string& path) { files_[path].heldElsewhere = true; }

    /// References that the code under test holds now.
    int references(const std::string& path) { return files_[path].references; }

    Module open(const std::string& path) override;
    Module opened(const std::string& path) override;
    void* lookUp(Module module, const std::string& name) override;
    void release(Module module) override;
    std::string problem() const override { return problem_; }

private:
    struct File {
        Exports exports;
        int references = 0;
        bool heldElsewhere = false;
    };

    File* openFile(Module module);

    std::map<std::string, File> files_;  // a handle is the address of its file
    std::string problem_;
};

}  // namespace corvane::fakes
