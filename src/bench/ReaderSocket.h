#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "bench/Descriptor.h"
#include "bench/Loop.h"
#include "models/HidReader.h"

namespace corvane::bench {

/// The Unix socket at which the bench's build of the HID transport library finds the simulated readers (the format is
/// in cable/HidBench.h). A reader that is unplugged leaves the list and loses its connections; one that is plugged in
/// again is back. What a reader says while no program has it open is lost. The loop must live longer; the file is
/// removed at the end.
class ReaderSocket : public Timed {
public:
    /// Throws std::system_error when the socket cannot be had.
    ReaderSocket(Loop& loop, std::string path);
    ~ReaderSocket() override;
    ReaderSocket(const ReaderSocket&) = delete;
    ReaderSocket& operator=(const ReaderSocket&) = delete;

    const std::string& path() const { return path_; }

    /// Lists the reader under a device path of its own, the socket's with ".1" behind it and so on, which is returned.
    /// An empty file lies there that programs lock, as they do with the node of a real reader.
    std::string add(models::HidReader& reader);
    void remove(models::HidReader& reader);

    /// Looks afresh who is plugged in; needed after a plug was pulled or put in between two events of the loop.
    void update();

    std::optional<Micros> nextAt() const override;
    void act(Micros now) override;

private:
    struct Entry {
        std::string path;
        models::HidReader* reader;
        bool isListed = false;
    };
    struct Connection {
        Descriptor socket;
        bool wantsLists = false;
        models::HidReader* reader = nullptr;
        bool isWatched = false;
        bool hasEnded = false;
    };

    void accept();
    void hear(Connection& connection);
    void greet(Connection& connection, const std::string& greeting);
    void take(Connection& connection, const std::string& packet);
    void watch(Connection& connection, bool listens);
    void sweep();
    bool isOpen(const models::HidReader& reader) const;
    std::string list() const;

    Loop& loop_;
    std::string path_;
    Descriptor listener_;
    std::vector<Entry> entries_;
    int lastNumber_ = 0;
    std::list<Connection> connections_;
};

}  // namespace corvane::bench
