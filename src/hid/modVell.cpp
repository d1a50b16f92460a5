#include "hid/modVell.h"

#include "hid/VellIO.h"

namespace corvane {

modVell::~modVell() {
    if (module_) loader_.release(module_);
}

void* modVell::bind(const char* name) {
    if (!module_) module_ = loader_.open(path_);
    return module_ ? loader_.lookUp(module_, name) : nullptr;
}

std::int32_t VellCallBackProc(std::int32_t hVell, std::intptr_t user, std::int32_t wParam, std::int32_t lParam) {
    auto& control = *reinterpret_cast<VellIO*>(user);  // NOLINT(performance-no-int-to-ptr): a C interface's way
    try {
        return control.VellIOProc(hVell, wParam, lParam);
    } catch (...) {
        control.keepError(std::current_exception());  // it must not pass through the library's C frames
        return 0;
    }
}

}  // namespace corvane
