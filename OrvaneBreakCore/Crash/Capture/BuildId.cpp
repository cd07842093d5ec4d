// SPDX-License-Identifier: GPL-3.0-or-later
#include "BuildId.h"

#include <elf.h>

#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace {

using Bytes = std::span<const unsigned char>;

constexpr std::string_view owner("GNU", 4);

/// The id in a segment of notes, each of which has a header, an owner and a content.
Bytes buildIdIn(Bytes notes, std::size_t alignment)
{
    const auto aligned = [alignment](std::size_t size) {
        return (size + alignment - 1) / alignment * alignment;
    };
    ElfW(Nhdr) note = {};
    while (notes.size() > sizeof note) {
        std::memcpy(&note, notes.data(), sizeof note);
        const std::size_t content = aligned(sizeof note + note.n_namesz);
        const std::size_t end = content + note.n_descsz;
        if (end > notes.size())
            break;
        const bool isOwned = note.n_namesz == owner.size() &&
                             std::memcmp(notes.data() + sizeof note, owner.data(), owner.size()) == 0;
        if (isOwned && note.n_type == NT_GNU_BUILD_ID)
            return notes.subspan(content, note.n_descsz);
        if (aligned(end) >= notes.size())
            break;
        notes = notes.subspan(aligned(end));
    }
    return {};
}

} // namespace

Bytes buildIdOf(const link_map &map, const void *image)
{
    const auto *header = static_cast<const ElfW(Ehdr) *>(image);
    if (std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0)
        return {};
    const auto *table =
        reinterpret_cast<const ElfW(Phdr) *>(static_cast<const char *>(image) + header->e_phoff);
    for (const ElfW(Phdr) & segment : std::span(table, header->e_phnum)) {
        if (segment.p_type != PT_NOTE)
            continue;
        const auto *begin = std::bit_cast<const unsigned char *>(map.l_addr + segment.p_vaddr);
        const Bytes id = buildIdIn({begin, segment.p_memsz}, segment.p_align == 8 ? 8 : 4);
        if (!id.empty())
            return id;
    }
    return {};
}
