#pragma once

#include <string_view>

namespace corvane {

/// Where a console program's text goes. Writing never fails and never waits for a reader: what cannot be written now
/// goes out later, what nobody reads any more is dropped.
class TextSink {
public:
    virtual ~TextSink() = default;
    virtual void write(std::string_view utf8) = 0;
    virtual bool isTerminal() const = 0;
};

}  // namespace corvane
