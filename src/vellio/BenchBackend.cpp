#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <deque>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>
#include <utility>

#include "cable/HidBench.h"
#include "vellio/HidBackend.h"
#include "vellio/NodeLock.h"

namespace corvane::vellio {
namespace {

constexpr int kAnswerTime = 1000;  // ms for the bench to answer an opening

std::uint32_t milliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(now.tv_sec * 1000LL + now.tv_nsec / 1000000);
}

/// A connection to the bench; packets go as a whole or not at all.
class BenchSocket {
public:
    enum class Got { packet, nothing, end };

    BenchSocket() = default;
    ~BenchSocket() { close(); }
    BenchSocket(const BenchSocket&) = delete;
    BenchSocket& operator=(const BenchSocket&) = delete;

    bool connect(const std::string& greeting) {
        close();
        const char* const path = std::getenv(hidbench::kSocketVariable);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string name = path ? path : "";
        if (name.empty() || name.size() >= sizeof address.sun_path) return false;
        std::copy(name.begin(), name.end(), address.sun_path);
        socket_ = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        if (socket_ < 0) return false;
        const auto* const target = reinterpret_cast<const sockaddr*>(&address);
        if (::connect(socket_, target, sizeof address) == 0 && send(greeting, 0) == Moved::done) return true;
        close();
        return false;
    }

    bool isConnected() const { return socket_ >= 0; }

    Moved send(const std::string& packet, int waitMs) {
        if (socket_ < 0) return Moved::gone;
        if (waitMs > 0) await(POLLOUT, waitMs);
        if (::send(socket_, packet.data(), packet.size(), MSG_NOSIGNAL) >= 0) return Moved::done;
        return errno == EAGAIN || errno == EINTR ? Moved::notNow : Moved::gone;
    }

    Got receive(std::string& packet, int waitMs) {
        if (socket_ < 0) return Got::end;
        if (waitMs > 0) await(POLLIN, waitMs);
        packet.resize(hidbench::kLargestPacket);
        const auto count = ::recv(socket_, packet.data(), packet.size(), 0);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) return Got::nothing;
        packet.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0 ? Got::packet : Got::end;
    }

    void close() {
        if (socket_ >= 0) ::close(socket_);
        socket_ = -1;
    }

private:
    void await(short what, int waitMs) {
        pollfd entry{socket_, what, 0};
        ::poll(&entry, 1, waitMs);
    }

    int socket_ = -1;
};

std::string packetOf(char kind, const HidReport& report) { return kind + std::string(report.begin(), report.end()); }

class BenchDevice : public HidDevice {
public:
    bool open(const std::string& path, Refusal& refusal) {
        if (!lock_.take(path, refusal)) return false;
        refusal.words = "the bench does not answer";
        std::string answer;
        if (!socket_.connect("O" + path)) return false;
        if (socket_.receive(answer, kAnswerTime) != BenchSocket::Got::packet) return false;
        refusal.words = answer.substr(1);
        return answer[0] == 'Y';
    }

    Moved read(HidReport& report) override {
        std::string packet;
        if (!early_.empty()) {
            packet = std::move(early_.front());
            early_.pop_front();
        } else {
            const auto got = socket_.receive(packet, 0);
            if (got != BenchSocket::Got::packet) return got == BenchSocket::Got::end ? Moved::gone : Moved::notNow;
        }
        // A packet that is no report is passed on as one without meaning, so that a flood of them does not hold us.
        report = {};
        if (packet[0] == 'R' && packet.size() == 1 + report.size())
            std::copy_n(packet.begin() + 1, report.size(), report.begin());
        return Moved::done;
    }

    Moved write(const HidReport& report, int waitMs) override { return socket_.send(packetOf('R', report), waitMs); }

    bool getInputReport(HidReport& report, int waitMs) override { return ask('I', report, &report, waitMs); }
    bool getFeature(HidReport& report, int waitMs) override { return ask('G', report, &report, waitMs); }
    bool setFeature(const HidReport& report, int waitMs) override { return ask('S', report, nullptr, waitMs); }

private:
    bool ask(char kind, const HidReport& report, HidReport* answer, int waitMs) {
        if (socket_.send(packetOf(kind, report), waitMs) != Moved::done) return false;
        const std::uint32_t start = milliseconds();
        for (int left = waitMs; left > 0; left = waitMs - static_cast<int>(milliseconds() - start)) {
            std::string packet;
            const auto got = socket_.receive(packet, left);
            if (got == BenchSocket::Got::end) return false;
            if (got == BenchSocket::Got::nothing) continue;
            if (packet[0] == 'R') {
                early_.push_back(std::move(packet));
            } else {
                const bool whole = !answer || packet.size() == 1 + answer->size();
                if (packet[0] != kind || !whole) return false;
                if (answer) std::copy(packet.begin() + 1, packet.end(), answer->begin());
                return true;
            }
        }
        return false;
    }

    NodeLock lock_;
    BenchSocket socket_;
    std::deque<std::string> early_;  // reports that came before an answer
};

class BenchBackend : public HidBackend {
public:
    std::vector<DeviceInfo> devices() override {
        receiveLists(!list_.isConnected() && list_.connect("L") ? kAnswerTime : 0);
        std::vector<DeviceInfo> found;
        for (const auto& device : devices_) {
            found.push_back(
                {device.path, device.vendor, device.product, device.manufacturer, device.name, device.serialNumber});
        }
        return found;
    }

    std::optional<std::vector<std::string>> changes() override {
        receiveLists(!list_.isConnected() && list_.connect("L") ? kAnswerTime : 0);
        if (!std::exchange(changed_, false)) return std::nullopt;
        return std::exchange(gone_, {});
    }

    std::unique_ptr<HidDevice> open(const std::string& path, Refusal& refusal) override {
        auto device = std::make_unique<BenchDevice>();
        if (!device->open(path, refusal)) return nullptr;
        return device;
    }

    std::uint32_t tick() override { return milliseconds(); }

private:
    void receiveLists(int waitMs) {
        std::string packet;
        for (;;) {
            const auto got = list_.receive(packet, waitMs);
            waitMs = 0;
            if (got == BenchSocket::Got::nothing) return;
            if (got == BenchSocket::Got::end) list_.close();
            const bool ended = got == BenchSocket::Got::end;
            takeOver(ended ? std::vector<hidbench::Device>() : hidbench::listOf(packet));
            if (ended) return;
        }
    }

    void takeOver(std::vector<hidbench::Device> devices) {
        for (const auto& old : devices_) {
            const auto same = [&old](const hidbench::Device& device) { return device.path == old.path; };
            if (std::none_of(devices.begin(), devices.end(), same)) gone_.push_back(old.path);
        }
        changed_ = true;
        devices_ = std::move(devices);
    }

    BenchSocket list_;
    std::vector<hidbench::Device> devices_;
    std::vector<std::string> gone_;
    bool changed_ = false;
};

}  // namespace

std::unique_ptr<HidBackend> makeBackend() { return std::make_unique<BenchBackend>(); }

}  // namespace corvane::vellio
