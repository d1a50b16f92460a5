#pragma once

#include <string_view>
#include <vector>

namespace corvane::fuzz {

/// One way into the program: takes any bytes, and ends the process when something about them is not as it must be.
struct Target {
    const char* name;
    void (*run)(std::string_view input);
};

// What a device says.
void query(std::string_view input);
void lines(std::string_view input);
void prompt(std::string_view input);
void update(std::string_view input);

// What a HID reader says.
void hid_reports(std::string_view input);
void hid_commands(std::string_view input);

// What a site says and holds.
void ftp_server(std::string_view input);
void addresses(std::string_view input);
void inf_list(std::string_view input);
void inf_profile(std::string_view input);
void site(std::string_view input);
void hex(std::string_view input);

// What the user's own files and the command line hold.
void settings_text(std::string_view input);
void settings_file(std::string_view input);
void port_map(std::string_view input);
void journal(std::string_view input);
void arguments(std::string_view input);
void notation(std::string_view input);
void texts(std::string_view input);

const std::vector<Target>& targets();

}  // namespace corvane::fuzz
