// SPDX-License-Identifier: BSD-3-Clause
// Reads the note of a library's file, and compares it with this host's contract.
#include "contract.h"

#include "plugin.h"

#include <link.h>

#include <cstring>
#include <fstream>
#include <vector>

namespace ipmib::host
{

namespace
{

IPMIB_CONTRACT_NOTE;

using FileHeader = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using NoteHeader = ElfW(Nhdr);

struct Part {
    const char *header;
    std::uint32_t IpmibContractNote::*version;
};

constexpr Part contractParts[] = {
    {"records.h", &IpmibContractNote::records},
    {"platform.h", &IpmibContractNote::platform},
    {"message.h", &IpmibContractNote::message},
    {"module.h", &IpmibContractNote::module},
};

std::string versionText(std::uint32_t version)
{
    return std::to_string(IPMIB_CONTRACT_FIRST(version)) + "." + std::to_string(IPMIB_CONTRACT_SECOND(version));
}

template <typename Record>
bool readAt(std::ifstream &file, std::uint64_t offset, Record *records, std::size_t count)
{
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(reinterpret_cast<char *>(records), static_cast<std::streamsize>(count * sizeof(Record)));
    return file.good();
}

bool isOfThisMachine(const FileHeader &header)
{
    constexpr bool isWide = sizeof(void *) == 8;
    constexpr bool isLittle = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == (isWide ? ELFCLASS64 : ELFCLASS32) &&
           header.e_ident[EI_DATA] == (isLittle ? ELFDATA2LSB : ELFDATA2MSB) && header.e_phentsize == sizeof(Segment);
}

// The contract's note among those of a segment: each is a header, a name and a description, in steps of 4 bytes.
std::optional<IpmibContractNote> contractIn(const std::vector<char> &notes)
{
    const auto padded = [](std::size_t size) { return (size + 3) / 4 * 4; };
    for (std::size_t place = 0; place + sizeof(NoteHeader) <= notes.size();) {
        NoteHeader header;
        std::memcpy(&header, notes.data() + place, sizeof header);
        IpmibContractNote note;
        if (place + sizeof note <= notes.size()) {
            std::memcpy(&note, notes.data() + place, sizeof note);
            if (note.name_size == ipmib_contract_note.name_size &&
                note.versions_size == ipmib_contract_note.versions_size && note.type == IPMIB_CONTRACT_NOTE_TYPE &&
                std::memcmp(note.name, ipmib_contract_note.name, note.name_size) == 0) {
                return note;
            }
        }
        if (header.n_namesz > notes.size() || header.n_descsz > notes.size()) {
            break;
        }
        place += sizeof header + padded(header.n_namesz) + padded(header.n_descsz);
    }
    return std::nullopt;
}

} // namespace

std::optional<IpmibContractNote> contractOf(const std::string &path)
{
    constexpr std::size_t longest = 65536; // bytes of notes, and of segments
    std::ifstream file(path, std::ios::binary);
    FileHeader header;
    if (!readAt(file, 0, &header, 1) || !isOfThisMachine(header) || header.e_phnum * sizeof(Segment) > longest) {
        return std::nullopt;
    }
    std::vector<Segment> segments(header.e_phnum);
    if (!readAt(file, header.e_phoff, segments.data(), segments.size())) {
        return std::nullopt;
    }
    for (const Segment &segment : segments) {
        if (segment.p_type == PT_NOTE && segment.p_filesz <= longest) {
            std::vector<char> notes(segment.p_filesz);
            if (readAt(file, segment.p_offset, notes.data(), notes.size())) {
                if (const auto note = contractIn(notes)) {
                    return note;
                }
            }
        }
    }
    return std::nullopt;
}

void requireContract(const std::string &path)
{
    const auto note = contractOf(path);
    if (!note) {
        return;
    }
    for (const Part &part : contractParts) {
        const std::uint32_t its = (*note).*part.version;
        const std::uint32_t ours = ipmib_contract_note.*part.version;
        if (IPMIB_CONTRACT_FIRST(its) != IPMIB_CONTRACT_FIRST(ours)) {
            throw PluginError(path + ": it was built for version " + versionText(its) + " of ipmib/" + part.header +
                              ", and this program has version " + versionText(ours) +
                              "; build it with the headers of this program, or use the program that it was built for");
        }
    }
}

std::string contractText(const IpmibContractNote &note)
{
    std::string text;
    for (const Part &part : contractParts) {
        text += (text.empty() ? "" : ", ") + std::string(part.header) + " " + versionText(note.*part.version);
    }
    return text;
}

} // namespace ipmib::host
