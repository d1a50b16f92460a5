#pragma once

#include "platform/Digest.h"

namespace corvane {

class QtDigest : public Digest {
public:
    std::string sha256(std::string_view content) override;
};

}  // namespace corvane
