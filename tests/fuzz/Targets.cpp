#include "fuzz/Targets.h"

namespace corvane::fuzz {

const std::vector<Target>& targets() {
    static const std::vector<Target> all = {
        {"query", query},
        {"lines", lines},
        {"prompt", prompt},
        {"update", update},
        {"hid_reports", hid_reports},
        {"hid_commands", hid_commands},
        {"ftp_server", ftp_server},
        {"addresses", addresses},
        {"inf_list", inf_list},
        {"inf_profile", inf_profile},
        {"site", site},
        {"hex", hex},
        {"settings_text", settings_text},
        {"settings_file", settings_file},
        {"port_map", port_map},
        {"journal", journal},
        {"arguments", arguments},
        {"notation", notation},
        {"texts", texts},
    };
    return all;
}

}  // namespace corvane::fuzz
