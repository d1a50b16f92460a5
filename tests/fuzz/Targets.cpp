#include "fuzz/Targets.h"

namespace corvane::fuzz {

const std::vector<Target>& targets() {
    static const std::vector<Target> all = {
        {"query", query, 60},
        {"lines", lines, 60},
        {"prompt", prompt, 60},
        {"update", update, 4},
        {"hid_reports", hid_reports, 60},
        {"hid_commands", hid_commands, 60},
        {"ftp_server", ftp_server, 10},
        {"addresses", addresses, 100},
        {"inf_list", inf_list, 100},
        {"inf_profile", inf_profile, 60},
        {"site", site, 4},
        {"hex", hex, 30},
        {"settings_text", settings_text, 60},
        {"settings_file", settings_file, 100},
        {"port_map", port_map, 60},
        {"journal", journal, 60},
        {"arguments", arguments, 100},
        {"notation", notation, 100},
        {"texts", texts, 100},
    };
    return all;
}

}  // namespace corvane::fuzz
