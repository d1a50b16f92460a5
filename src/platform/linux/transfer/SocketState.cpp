#include "platform/linux/transfer/SocketState.h"

#include <poll.h>
#include <sys/socket.h>

namespace corvane {

bool isReadable(int socket) {
    pollfd entry{socket, POLLIN, 0};
    return ::poll(&entry, 1, 0) > 0;
}

bool isHungUp(int socket) {
    pollfd entry{socket, POLLRDHUP, 0};
    return ::poll(&entry, 1, 0) > 0;
}

bool isAtEnd(int socket) {
    char next = 0;
    return ::recv(socket, &next, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

}  // namespace corvane
