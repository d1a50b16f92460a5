#pragma once

#include <curl/curl.h>

#include "platform/AsyncReader.h"

namespace corvane {

/// What the library's code for a failed read means; a server that has said nothing yet was not reached.
ReadFailure::Kind failureKind(CURLcode code, bool hasReplied);

}  // namespace corvane
