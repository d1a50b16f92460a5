#include "support/FakeModuleLoader.h"

#include <gtest/gtest.h>

namespace corvane::fakes {

FakeModuleLoader::~FakeModuleLoader() {
    for (const auto& [path, file] : files_) EXPECT_EQ(file.references, 0) << path << " was not released";
}

ModuleLoader::Module FakeModuleLoader::open(const std::string& path) {
    const auto found = files_.find(path);
    problem_ = found == files_.end() ? path + ": cannot open shared object file" : "";
    if (found == files_.end()) return nullptr;
    ++found->second.references;
    return &found->second;
}

ModuleLoader::Module FakeModuleLoader::opened(const std::string& path) {
    const auto found = files_.find(path);
    if (found == files_.end() || (!found->second.heldElsewhere && found->second.references == 0)) return nullptr;
    ++found->second.references;
    return &found->second;
}

/// The file behind a handle; fails the test when that handle is not open.
FakeModuleLoader::File* FakeModuleLoader::openFile(Module module) {
    for (auto& [path, file] : files_) {
        if (&file == module && file.references > 0) return &file;
    }
    ADD_FAILURE() << "a module is used that is not open";
    return nullptr;
}

void* FakeModuleLoader::lookUp(Module module, const std::string& name) {
    if (!module) return nullptr;
    const auto* file = openFile(module);
    if (!file) return nullptr;
    const auto found = file->exports.find(name);
    return found == file->exports.end() ? nullptr : found->second;
}

void FakeModuleLoader::release(Module module) {
    if (!module) return;
    if (auto* file = openFile(module)) --file->references;
}

}  // namespace corvane::fakes
