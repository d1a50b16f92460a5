#include "platform/linux/files/StoredFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/files/Files.h"

namespace corvane {

void storeFolder(const std::string& folder) {
    const int opened = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return;
    fsync(opened);  // some file systems cannot, and need not
    ::close(opened);
}

std::string makeStoredFolder(const std::string& path) { return makeFolder(path, storeFolder); }

}  // namespace corvane
