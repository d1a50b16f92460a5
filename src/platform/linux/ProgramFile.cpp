#include "platform/linux/ProgramFile.h"

#include <cstring>
#include <elf.h>
#include <link.h>
#include <optional>
#include <string_view>
#include <unistd.h>

#include "text/RuntimeError.h"
#include "text/Text.h"

namespace corvane {
namespace {

using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Section = ElfW(Shdr);

constexpr char kCutOff[] = "it is a part of a program only: it ends before its contents do";

bool isInside(std::string_view file, std::uint64_t offset, std::uint64_t size) {
    return offset <= file.size() && size <= file.size() - offset;
}

/// A structure of the file, which may lie at any place in it; nothing when it does not lie inside.
template <typename Type>
std::optional<Type> at(std::string_view file, std::uint64_t offset) {
    if (!isInside(file, offset, sizeof(Type))) return std::nullopt;
    Type value{};
    std::memcpy(&value, file.data() + offset, sizeof value);
    return value;
}

/// Why an interpreter, of a script or of a dynamic program, does not serve.
std::string interpreterFault(const std::string& path) {
    if (!path.empty() && path.front() == '/' && ::access(path.c_str(), X_OK) == 0) return {};
    return "what is to run it, \"" + onOneLine(path) + "\", is not there";
}

std::string scriptFault(std::string_view file) {
    auto line = trimmed(file.substr(2, file.substr(0, 4096).find_first_of("\r\n") - 2));
    return interpreterFault(std::string(line.substr(0, line.find_first_of(" \t"))));
}

std::string segmentFault(std::string_view file, const Header& header) {
    for (unsigned n = 0; n < header.e_phnum; ++n) {
        const auto segment = at<Segment>(file, header.e_phoff + std::uint64_t{n} * header.e_phentsize);
        if (!segment || !isInside(file, segment->p_offset, segment->p_filesz)) return kCutOff;
        if (segment->p_type != PT_INTERP) continue;
        const auto name = file.substr(segment->p_offset, segment->p_filesz);
        auto fault = interpreterFault(std::string(name.substr(0, name.find('\0'))));
        if (!fault.empty()) return fault;
    }
    return {};
}

bool areSectionsInside(std::string_view file, const Header& header) {
    for (unsigned n = 0; n < header.e_shnum; ++n) {
        const auto section = at<Section>(file, header.e_shoff + std::uint64_t{n} * header.e_shentsize);
        if (!section) return false;
        if (section->sh_type != SHT_NOBITS && !isInside(file, section->sh_offset, section->sh_size)) return false;
    }
    return true;
}

std::string elfFault(std::string_view file) {
    const auto header = at<Header>(file, 0);
    if (!header) return kCutOff;
    const auto own = readFile("/proc/self/exe");
    const auto mine = at<Header>(own, 0);
    for (const int place : {EI_CLASS, EI_DATA}) {
        if (!mine || header->e_ident[place] != mine->e_ident[place]) return "it is made for another kind of machine";
    }
    if (header->e_machine != mine->e_machine) return "it is made for another kind of machine";
    const bool isProgram =
        (header->e_type == ET_EXEC || header->e_type == ET_DYN) && header->e_entry && header->e_phnum;
    if (!isProgram || header->e_phentsize != sizeof(Segment)) return "it is no program, but another kind of ELF file";
    if (header->e_shnum && header->e_shentsize != sizeof(Section)) return "its table of sections is none";
    if (auto fault = segmentFault(file, *header); !fault.empty()) return fault;
    return areSectionsInside(file, *header) ? std::string() : kCutOff;
}

}  // namespace

std::string programFault(const std::string& path) try {
    const auto file = readFile(path);
    if (file.starts_with("#!")) return scriptFault(file);
    if (file.starts_with(ELFMAG)) return elfFault(file);
    return "it is no program";
} catch (const RuntimeError&) {
    return "it cannot be read";
}

}  // namespace corvane
