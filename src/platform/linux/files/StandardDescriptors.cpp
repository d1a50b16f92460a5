#include "platform/linux/files/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace corvane {

void fillStandardDescriptors() {
    // The system gives the lowest free number, so the first one above them shows that all three are there.
    int descriptor = -1;
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor >= 0) ::close(descriptor);
}

}  // namespace corvane
