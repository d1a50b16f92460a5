#pragma once

#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace corvane::bench {

/// Owns a descriptor of the system.
class Descriptor {
public:
    Descriptor() = default;

    /// Takes what a call of the system has returned; throws std::system_error with the call's name when that failed.
    Descriptor(int descriptor, const char* call) : descriptor_(descriptor) {
        if (descriptor < 0) throw std::system_error(errno, std::generic_category(), call);
    }
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~Descriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }

    int get() const { return descriptor_; }

private:
    int descriptor_ = -1;
};

}  // namespace corvane::bench
