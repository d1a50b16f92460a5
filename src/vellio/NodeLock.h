#pragma once

#include <string>

#include "vellio/HidBackend.h"

namespace corvane::vellio {

/// Keeps a device's node for this program alone among those that ask for the same lock, as serial ports are kept: two
/// programs on one reader would mix their bytes. The lock has a descriptor of its own; it ends with this object, and
/// with the program however that ends.
class NodeLock {
public:
    NodeLock() = default;
    ~NodeLock();
    NodeLock(NodeLock&& other) noexcept;
    NodeLock(const NodeLock&) = delete;
    NodeLock& operator=(const NodeLock&) = delete;

    /// False with the reason when another one holds it, or when the node does not open. To be called once.
    [[nodiscard]] bool take(const std::string& node, Refusal& refusal);

private:
    int descriptor_ = -1;
};

}  // namespace corvane::vellio
