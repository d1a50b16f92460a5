// What a site sends as the signature of its list, and what lies in a folder as somebody's key.

#include "fuzz/Input.h"
#include "fuzz/Targets.h"
#include "platform/linux/trust/SodiumSignatures.h"
#include "text/Text.h"
#include "trust/Signature.h"

namespace corvane::fuzz {
namespace {

std::string kept(const char* name) { return readFile(std::string(CORVANE_SIGNED_FILES) + "/" + name); }

}  // namespace

/// Whatever it says, it is genuine only when it is the maker's own.
void signature(std::string_view bytes) {
    static SodiumSignatures check;
    static std::string why;
    static const auto key = PublicKey::parse(kept("maker.pub"), why);
    static const auto list = kept("firmware.inf"), signer = Signature::parse(kept("good.minisig"), why)->bytes;
    std::string fault;
    const auto read = Signature::parse(bytes, fault);
    if (!read) return require(!fault.empty(), "a refusal says why");
    require(read->bytes.size() == 64 && read->ofComment.size() == 64, "a signature has its length");
    require(!read->isOfHash || !read->isGenuine(check, *key, list) || read->bytes == signer, "only the maker signs");
    if (read->isCommentGenuine(check, *key)) require(!read->comment.empty(), "a genuine comment says something");
    const auto time = utcText(read->signedAt().value_or(0));
    require(time.ends_with(" UTC") && time.size() == 23, "a time can be told");
}

void public_key(std::string_view bytes) {
    std::string fault;
    const auto read = PublicKey::parse(bytes, fault);
    require(read.has_value() == fault.empty(), "a refusal says why, and nothing else does");
    if (read) require(read->bytes.size() == 32 && read->id.size() == 16, "a key has its length");
}

}  // namespace corvane::fuzz
