// SPDX-License-Identifier: GPL-3.0-or-later
#include "BuildId.h"

#include <link.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

Bytes buildIdOf(std::span<const char> image)
{
    const auto isInside = [&](std::uint64_t offset, std::uint64_t size) {
        return offset <= image.size() && size <= image.size() - offset;
    };
    const auto *header = reinterpret_cast<const ElfW(Ehdr) *>(image.data());
    if (!isInside(0, sizeof *header) || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 ||
        !isInside(header->e_phoff, std::uint64_t{header->e_phnum} * sizeof(ElfW(Phdr))))
        return {};
    const std::span segments(reinterpret_cast<const ElfW(Phdr) *>(image.data() + header->e_phoff),
                             header->e_phnum);
    // What follows the first segment may be elsewhere in memory.
    for (const ElfW(Phdr) & segment : segments) {
        if (segment.p_type == PT_LOAD && segment.p_offset == 0)
            image = image.first(std::min<std::size_t>(image.size(), segment.p_filesz));
    }
    for (const ElfW(Phdr) & segment : segments) {
        if (segment.p_type != PT_NOTE || !isInside(segment.p_offset, segment.p_filesz))
            continue;
        const auto *begin = reinterpret_cast<const unsigned char *>(image.data() + segment.p_offset);
        const Bytes id = buildIdIn({begin, segment.p_filesz}, segment.p_align == 8 ? 8 : 4);
        if (!id.empty())
            return id;
    }
    return {};
}
