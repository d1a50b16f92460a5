#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "platform/Runtime.h"
#include "recording/Recording.h"
#include "text/Variant.h"

namespace corvane {

/// Where everything that watches a run writes what it sees, each with its time. It takes down nothing outside a run,
/// keeps the run's record until the next one begins, and lets no secret in: a secret that is sent is left out, and what
/// comes back is left out when it holds three bytes of one in a row. It does not own the runtime.
class Tape {
public:
    explicit Tape(const Runtime& runtime) : runtime_(runtime) {}

    /// A run begins, and what is known of the last one goes; or it ends.
    void begin();
    void end();
    bool isOn() const { return isOn_; }

    /// Microseconds since the run began.
    std::int64_t now() const { return runtime_.micros() - start_; }

    /// What happened, in words of this program, a device or a site.
    void note(const std::string& what, const std::string& where, std::string text = {});

    /// Bytes on a line.
    void sent(const std::string& where, const Bytes& bytes);
    void came(const std::string& what, const std::string& where, const Bytes& bytes, std::int64_t at);

    /// The same for one of the HID library's, which may be anything that a recording has a word for.
    void crossed(const std::string& what, const std::string& where, const Bytes& bytes);

    /// A password, as text or as it is sent; it is kept until the program ends, to find it.
    void keepSecret(const std::string& secret);

    /// What is sent from now on is this secret, until an empty one is given.
    void veil(const Bytes& secret);

    /// A text with every secret that is known left out.
    std::string withoutSecrets(std::string text) const;

    std::string text() const { return recording_.text(); }

    /// Who is given each line when it is written down, until the run ends: a copy that outlives a killed program. What
    /// the event was says whether it is one of very many.
    std::function<void(const RecordedEvent& event, std::string_view line)> onLine;

private:
    void add(RecordedEvent event);
    void write(const RecordedEvent& event);
    void flush();
    bool holdsSecret(const std::string& bytes) const;

    const Runtime& runtime_;
    Recording recording_;
    std::vector<RecordedEvent> held_;  // since the last sending, because a secret may come back in pieces
    std::vector<std::string> secrets_;
    std::int64_t start_ = 0;
    bool isOn_ = false, isVeiled_ = false;
};

}  // namespace corvane
