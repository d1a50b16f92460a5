#pragma once

namespace corvane {

/// What the computer lives from.
class PowerSupply {
public:
    virtual ~PowerSupply() = default;

    /// False also where nobody knows.
    virtual bool isOnBattery() = 0;
};

}  // namespace corvane
