#include "platform/linux/DlModuleLoader.h"

#include <dlfcn.h>

namespace corvane {
namespace {

/// A name without a separator would be looked for in the system's folders.
std::string asPath(const std::string& path) { return path.find('/') == std::string::npos ? "./" + path : path; }

}  // namespace

ModuleLoader::Module DlModuleLoader::open(const std::string& path) {
    const auto module = dlopen(asPath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    const char* reason = module ? nullptr : dlerror();
    problem_ = reason ? reason : "";
    return module;
}

ModuleLoader::Module DlModuleLoader::opened(const std::string& path) {
    return dlopen(asPath(path).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
}

void* DlModuleLoader::lookUp(Module module, const std::string& name) {
    return module ? dlsym(module, name.c_str()) : nullptr;
}

void DlModuleLoader::release(Module module) {
    if (module) dlclose(module);
}

}  // namespace corvane
