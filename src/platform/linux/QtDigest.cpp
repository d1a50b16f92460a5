#include "platform/linux/QtDigest.h"

#include <QCryptographicHash>

namespace corvane {

std::string QtDigest::sha256(std::string_view content) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(QByteArrayView(content.data(), static_cast<qsizetype>(content.size())));
    return hash.result().toHex().toStdString();
}

}  // namespace corvane
