#pragma once

namespace corvane {

bool isReadable(int socket);  ///< something has come, or the other side has ended
bool isHungUp(int socket);    ///< the other side has ended, whatever is left to read
bool isAtEnd(int socket);     ///< ... and nothing is left to read

}  // namespace corvane
