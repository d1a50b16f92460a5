#include "platform/linux/transfer/CurlFailure.h"

namespace corvane {

ReadFailure::Kind failureKind(CURLcode code, bool hasReplied) {
    switch (code) {
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_CONNECT:
            return ReadFailure::Kind::unreachable;
        case CURLE_OPERATION_TIMEDOUT:
            return hasReplied ? ReadFailure::Kind::brokenOff : ReadFailure::Kind::unreachable;
        case CURLE_LOGIN_DENIED:
            return ReadFailure::Kind::login;
        case CURLE_USE_SSL_FAILED:
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ENGINE_INITFAILED:
            return ReadFailure::Kind::notEncrypted;
        case CURLE_PEER_FAILED_VERIFICATION:
            return ReadFailure::Kind::notVouched;
        case CURLE_REMOTE_ACCESS_DENIED:
        case CURLE_REMOTE_FILE_NOT_FOUND:
        case CURLE_FTP_COULDNT_RETR_FILE:
            return ReadFailure::Kind::refused;
        default:
            return ReadFailure::Kind::brokenOff;
    }
}

}  // namespace corvane
