#include "app/PortList.h"

#include <algorithm>

#include "text/Cp1252.h"
#include "text/Number.h"
#include "text/Text.h"

namespace corvane {

std::string PortRow::text() const {
    auto text = name;
    if (!product.empty()) text += "  " + product;
    if (!serialNumber.empty()) text += ", " + serialNumber;
    return place.empty() ? text : text + "  " + place;
}

bool PortList::look() {
    std::vector<PortRow> rows;
    std::vector<std::string> seen;
    for (const auto& entry : map_.list().value_or(std::vector<PortMapEntry>())) {
        const auto node = map_.devicePath(static_cast<int>(leadingNumber(entry.port.substr(3))));
        rows.push_back({entry.port, node.value_or(""), {}, {}, {}});
        const auto& place = rows.back().place;
        seen.push_back(entry.port + " " + place + (inspector_.isThere(place) ? "+" : "-") +
                       (inspector_.mayUse(place) ? "+" : "-"));
    }
    const auto serial = rows.size();
    for (std::int32_t i = 0, count = readers_.NumberOfCommPorts(); i < count; ++i) {
        const auto text = readers_.EnumCommPortEx(i);
        rows.push_back({toUtf8(readers_.EnumCommPort(i)), {}, {}, {}, {}});
        seen.push_back(toUtf8(text));
    }
    if (hasLooked_ && seen == seen_) return false;
    hasLooked_ = true;
    seen_ = std::move(seen);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        auto& row = rows[i];
        if (i < serial) {
            const auto adapter = inspector_.adapterOf(row.place);
            row.product = adapter.product;
            row.serialNumber = adapter.serialNumber;
            row.problem = problemOf(row.place);
        } else {
            row.product = toUtf8(readers_.GetDeviceProduct(fromUtf8(row.name)));
            row.serialNumber = toUtf8(readers_.GetDeviceSerialNumber(fromUtf8(row.name)));
            // Services of a desktop look at every HID device without disturbing it; only a lock tells of a dialogue.
            const auto holder = inspector_.lockerOf(readers_.devicePath(fromUtf8(row.name)));
            if (holder) row.problem = "in use by " + holder->text();
        }
    }
    rows_ = std::move(rows);
    return true;
}

std::string PortList::problemOf(const std::string& node) {
    if (!inspector_.isThere(node)) return "not there: plug the adapter in, or mend its line in serialcomm.conf";
    if (!inspector_.mayUse(node)) return "you may not open it: it belongs to the group " + inspector_.groupOf(node);
    const auto holder = inspector_.holderOf(node);
    return holder ? "in use by " + holder->text() : "";
}

}  // namespace corvane
