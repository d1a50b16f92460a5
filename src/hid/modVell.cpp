#include "hid/modVell.h"

namespace corvane {

modVell::~modVell() {
    if (module_) loader_.release(module_);
}

void* modVell::bind(const char* name) {
    if (!module_) module_ = loader_.open(path_);
    return module_ ? loader_.lookUp(module_, name) : nullptr;
}

}  // namespace corvane
