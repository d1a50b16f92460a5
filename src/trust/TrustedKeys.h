#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/SignatureCheck.h"
#include "trust/PublicKey.h"
#include "trust/Voucher.h"

namespace corvane {

/// The public keys that this computer trusts: the one that the program was built with, called "maker", and one of each
/// "*.pub" file in the folders, called like its file. A file that is no key is told of, and trusts nobody: with it in
/// place, nothing that is unsigned is taken for good.
class TrustedKeys {
public:
    TrustedKeys() = default;
    [[nodiscard]] static TrustedKeys load(const KeyPlaces& places);

    /// Whether signatures are asked for at all.
    bool areThere() const { return !keys_.empty() || !problems_.empty(); }

    /// Files that are no keys, a sentence each; UTF-8.
    const std::vector<std::string>& problems() const { return problems_; }

    /// The signature is the content of a signature file; empty for none. The name is what the file is called: a
    /// signature that says that it is another file's is not taken for this one's.
    [[nodiscard]] Judgement judge(SignatureCheck& check, std::string_view content, std::string_view signature,
                                  std::string_view fileName) const;

private:
    struct NamedKey {
        std::string name;
        PublicKey key;
    };

    void take(const std::string& name, std::string_view text, const std::string& place);
    std::string unknownKey(const std::string& id) const;

    std::vector<NamedKey> keys_;
    std::vector<std::string> problems_;
};

}  // namespace corvane
