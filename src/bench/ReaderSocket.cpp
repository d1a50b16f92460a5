#include "bench/ReaderSocket.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "cable/HidBench.h"

namespace corvane::bench {
namespace {

/// False when it cannot be sent: the program reads nothing, or has ended.
bool send(int socket, const std::string& packet) {
    return ::send(socket, packet.data(), packet.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
}

std::string packetOf(char kind, const HidReport& report) { return kind + std::string(report.begin(), report.end()); }

}  // namespace

ReaderSocket::ReaderSocket(Loop& loop, std::string path)
    : loop_(loop),
      path_(std::move(path)),
      listener_(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "socket") {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.size() >= sizeof address.sun_path) {
        throw std::system_error(ENAMETOOLONG, std::generic_category(), path_);
    }
    std::copy(path_.begin(), path_.end(), address.sun_path);
    ::unlink(path_.c_str());
    if (::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0 ||
        ::listen(listener_.get(), 8) < 0) {
        throw std::system_error(errno, std::generic_category(), path_);
    }
    loop_.watch(listener_.get(), [this] { accept(); });
    loop_.add(*this);
}

ReaderSocket::~ReaderSocket() {
    loop_.remove(*this);
    loop_.unwatch(listener_.get());
    for (auto& connection : connections_) watch(connection, false);
    for (const auto& entry : entries_) ::unlink(entry.path.c_str());
    ::unlink(path_.c_str());
}

std::string ReaderSocket::add(models::HidReader& reader) {
    auto path = path_ + "." + std::to_string(++lastNumber_);
    const Descriptor node(::open(path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600), path.c_str());
    entries_.push_back({path, &reader});
    update();
    return path;
}

void ReaderSocket::remove(models::HidReader& reader) {
    std::erase_if(entries_, [&reader](const Entry& entry) { return entry.reader == &reader; });
    for (auto& connection : connections_) {
        if (connection.reader == &reader) connection.reader = nullptr, connection.hasEnded = true;
        if (connection.wantsLists) connection.hasEnded = !send(connection.socket.get(), list());
    }
}

void ReaderSocket::accept() {
    const int socket = ::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) return;  // the program has gone away again
    connections_.emplace_back();
    connections_.back().socket = Descriptor(socket, "accept4");
    watch(connections_.back(), true);
}

void ReaderSocket::watch(Connection& connection, bool listens) {
    if (listens == connection.isWatched) return;
    connection.isWatched = listens;
    if (listens) {
        loop_.watch(connection.socket.get(), [this, &connection] { hear(connection); });
    } else {
        loop_.unwatch(connection.socket.get());
    }
}

void ReaderSocket::hear(Connection& connection) {
    std::string packet(hidbench::kLargestPacket, '\0');
    const auto count = ::recv(connection.socket.get(), packet.data(), packet.size(), 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return;
    packet.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    if (packet.empty()) {
        connection.hasEnded = true;
    } else if (connection.reader) {
        take(connection, packet);
    } else {
        greet(connection, packet);
    }
    update();
}

void ReaderSocket::greet(Connection& connection, const std::string& greeting) {
    if (greeting == "L") {
        connection.wantsLists = true;
        send(connection.socket.get(), list());
        return;
    }
    for (const auto& entry : entries_) {
        if (greeting != "O" + entry.path || !entry.reader->isPlugged()) continue;
        connection.reader = entry.reader;
        connection.hasEnded = !send(connection.socket.get(), "Y");
        return;
    }
    send(connection.socket.get(), "Nthere is no such reader");
}

void ReaderSocket::take(Connection& connection, const std::string& packet) {
    HidReport report{};
    if (packet.size() != 1 + report.size()) return;
    std::copy(packet.begin() + 1, packet.end(), report.begin());
    if (packet[0] == 'R') {
        const Micros now = loop_.now();
        connection.reader->hear(now, report);
        watch(connection, connection.reader->accepts(now));
    } else {
        send(connection.socket.get(), "X");  // these readers know reports of the two channels only
    }
}

std::string ReaderSocket::list() const {
    std::vector<hidbench::Device> devices;
    for (const auto& entry : entries_) {
        if (!entry.isListed) continue;
        const auto& options = entry.reader->options();
        devices.push_back(
            {entry.path, options.vendor, options.product, options.manufacturer, options.name, options.serialNumber});
    }
    const std::string text = hidbench::listText(devices);
    return text.empty() ? "\n" : text;  // an empty packet would be the end of the connection
}

void ReaderSocket::update() {
    bool changed = false;
    for (auto& entry : entries_) {
        changed = changed || entry.isListed != entry.reader->isPlugged();
        entry.isListed = entry.reader->isPlugged();
    }
    for (auto& connection : connections_) {
        if (connection.reader && !connection.reader->isPlugged()) connection.hasEnded = true;
        if (changed && connection.wantsLists) connection.hasEnded = !send(connection.socket.get(), list());
    }
}

/// Connections that have ended are removed here, where no caller is in the middle of using one.
void ReaderSocket::sweep() {
    for (auto at = connections_.begin(); at != connections_.end();) {
        if (!at->hasEnded) {
            ++at;
            continue;
        }
        watch(*at, false);
        at = connections_.erase(at);
    }
}

bool ReaderSocket::isOpen(const models::HidReader& reader) const {
    return std::any_of(connections_.begin(), connections_.end(), [&reader](const Connection& connection) {
        return connection.reader == &reader && !connection.hasEnded;
    });
}

std::optional<Micros> ReaderSocket::nextAt() const {
    std::optional<Micros> next;
    const auto consider = [&next](std::optional<Micros> moment) {
        if (moment && (!next || *moment < *next)) next = moment;
    };
    for (const auto& entry : entries_) consider(entry.reader->nextAt());
    for (const auto& connection : connections_) {
        if (connection.hasEnded) consider(0);
        if (connection.reader && !connection.isWatched) consider(connection.reader->acceptsAt());
    }
    return next;
}

void ReaderSocket::act(Micros now) {
    for (const auto& entry : entries_) {
        while (!isOpen(*entry.reader) && entry.reader->speak(now)) continue;
    }
    for (auto& connection : connections_) {
        if (!connection.reader || connection.hasEnded) continue;
        while (const auto report = connection.reader->speak(now)) send(connection.socket.get(), packetOf('R', *report));
        watch(connection, connection.reader->accepts(now));
    }
    update();
    sweep();
}

}  // namespace corvane::bench
