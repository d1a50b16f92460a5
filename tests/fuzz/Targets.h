#pragma once

#include <string_view>

namespace corvane::fuzz {

/// One way into the program: takes any bytes, and ends the process when something about them is not as it must be.
using Run = void(std::string_view input);

Run query, lines, update;                         ///< what a device says
Run hid_reports, hid_commands;                    ///< what a HID reader says
Run addresses, inf_list, inf_profile, site, hex;  ///< what a site names and holds
Run tls_dialogue;                                 ///< what a site says before and behind the encryption

/// What the user's own files and the command line hold.
Run settings_text, settings_file, port_map, journal, arguments, texts;

/// What is to prove whose a site's list is.
Run signature, public_key;

/// What somebody sends as a report, or as a recording that a bench is to replay.
Run report, recording;

}  // namespace corvane::fuzz
