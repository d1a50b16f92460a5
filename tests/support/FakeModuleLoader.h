#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <map>
#include <string>

#include "platform/ModuleLoader.h"

namespace corvane::fakes {

/// Modules that exist by path, each with its exported functions. Fails the test when a handle is used or released that
/// is not open, and, at its end, when one was never released.
class FakeModuleLoader : public ModuleLoader {
public:
    /// Functions by name, as reinterpret_cast<void*>(&function), or null for one that is missing. Any other is the test
    /// program's own, when it has one of that name.
    using Exports = std::map<std::string, void*>;

    ~FakeModuleLoader() override {
        for (const auto& [path, file] : files_) EXPECT_EQ(file.references, 0) << path << " was not released";
    }

    void provide(const std::string& path, Exports exports) { files_[path].exports = std::move(exports); }

    /// References that the code under test holds now.
    int references(const std::string& path) { return files_[path].references; }

    Module open(const std::string& path) override {
        problem_ = files_.count(path) ? "" : path + ": cannot open shared object file";
        return problem_.empty() ? held(path) : nullptr;
    }

    Module opened(const std::string& path) override {
        return files_.count(path) && references(path) ? held(path) : nullptr;
    }

    void* lookUp(Module module, const std::string& name) override {
        if (!module) return nullptr;
        const auto& exports = openFile(module).exports;
        const auto found = exports.find(name);
        return found == exports.end() ? ::dlsym(RTLD_DEFAULT, name.c_str()) : found->second;
    }

    void release(Module module) override {
        if (module) --openFile(module).references;
    }

    std::string problem() const override { return problem_; }

private:
    struct File {
        Exports exports;
        int references = 0;
    };

    Module held(const std::string& path) {
        ++files_[path].references;
        return &files_[path];
    }

    /// The file behind a handle, which must be open.
    static File& openFile(Module module) {
        auto& file = *static_cast<File*>(module);
        EXPECT_GT(file.references, 0) << "a module is used that is not open";
        return file;
    }

    std::map<std::string, File> files_;  // a handle is the address of its file
    std::string problem_;
};

}  // namespace corvane::fakes
