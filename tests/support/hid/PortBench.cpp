#include "support/hid/PortBench.h"

namespace corvane::fakes {
namespace {

class SerialPortBench : private SerialBench, public PortBench {
public:
    SerialPortBench() : PortBench(SerialBench::runtime, SerialBench::port) {}

    std::string name(std::int16_t number) const override { return "COM" + std::to_string(number); }

    void plug(std::int16_t number, models::Peer& device) override {
        std::erase_if(map.entries, [&](const PortMapEntry& entry) { return entry.port == name(number); });
        SerialBench::plug(number, device);
    }

    void unplugAll() override { map.entries.clear(); }

    void refuse(std::int16_t number) override {
        list(number);
        control.markBusy(number);
    }
};

class HidPortBench : private HidBench, public PortBench {
public:
    HidPortBench() : PortBench(HidBench::runtime, HidBench::port) {}

    std::string name(std::int16_t number) const override { return "HID" + std::to_string(number); }

    void plug(std::int16_t number, models::Peer& device) override {
        bus.unplug(name(number));
        HidBench::port.NumberOfCommPorts();  // the library lets go of it
        readers_[number] = std::make_unique<SimulatedReader>(HidBench::runtime, device);
        readers_[number]->plug(bus, name(number));
        HidBench::port.NumberOfCommPorts();
    }

    void unplugAll() override {
        for (const auto& [number, reader] : readers_) bus.unplug(name(number));
        HidBench::port.NumberOfCommPorts();
        readers_.clear();
    }

    void refuse(std::int16_t number) override {
        plug(number, nobody_);
        bus.forbid(name(number));
    }

private:
    models::Device nobody_{{}};
    std::map<std::int16_t, std::unique_ptr<SimulatedReader>> readers_;
};

}  // namespace

std::unique_ptr<PortBench> PortBench::make(PortKind kind) {
    if (kind == PortKind::hid) return std::make_unique<HidPortBench>();
    return std::make_unique<SerialPortBench>();
}

}  // namespace corvane::fakes
