#pragma once

#include "platform/ModuleLoader.h"

namespace corvane {

/// The system's dynamic loader. All of a module is bound when it opens, so that a missing symbol shows there.
class DlModuleLoader : public ModuleLoader {
public:
    Module open(const std::string& path) override;
    Module opened(const std::string& path) override;
    void* lookUp(Module module, const std::string& name) override;
    void release(Module module) override;
    std::string problem() const override { return problem_; }

private:
    std::string problem_;
};

}  // namespace corvane
