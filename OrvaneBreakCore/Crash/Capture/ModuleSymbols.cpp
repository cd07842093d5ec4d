// SPDX-License-Identifier: GPL-3.0-or-later
#include "ProgramSymbols.h"

#include "FileDescriptor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <cstring>

ProgramSymbols::ProgramSymbols()
{
    map();
    if (m_image)
        locateTable();
}

ProgramSymbols::~ProgramSymbols()
{
    if (m_image)
        munmap(const_cast<char *>(m_image), m_size);
}

void ProgramSymbols::map()
{
    const FileDescriptor file(open("/proc/self/exe", O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        return;
    m_size = static_cast<std::size_t>(status.st_size);
    void *image = mmap(nullptr, m_size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (image != MAP_FAILED)
        m_image = static_cast<const char *>(image);
}

void ProgramSymbols::locateTable()
{
    const auto *header = reinterpret_cast<const ElfW(Ehdr) *>(m_image);
    if (!isInside(0, sizeof *header) || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 ||
        header->e_shentsize != sizeof(ElfW(Shdr)) ||
        !isInside(header->e_shoff, std::uint64_t{header->e_shnum} * sizeof(ElfW(Shdr))))
        return;
    const auto *sections = reinterpret_cast<const ElfW(Shdr) *>(m_image + header->e_shoff);
    for (std::size_t index = 0; index < header->e_shnum; ++index) {
        const ElfW(Shdr) &table = sections[index];
        if (table.sh_type != SHT_SYMTAB || table.sh_link >= header->e_shnum)
            continue;
        const ElfW(Shdr) &names = sections[table.sh_link];
        if (!isInside(table.sh_offset, table.sh_size) || !isInside(names.sh_offset, names.sh_size))
            return;
        m_symbols = reinterpret_cast<const ElfW(Sym) *>(m_image + table.sh_offset);
        m_symbolCount = table.sh_size / sizeof(ElfW(Sym));
        m_names = {m_image + names.sh_offset, names.sh_size};
        return;
    }
}

std::optional<ProgramSymbols::Symbol> ProgramSymbols::find(std::uint64_t address) const
{
    for (std::size_t index = 0; index < m_symbolCount; ++index) {
        const ElfW(Sym) &symbol = m_symbols[index];
        if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC && address >= symbol.st_value &&
            address - symbol.st_value < symbol.st_size)
            return Symbol{nameAt(symbol.st_name), address - symbol.st_value};
    }
    return std::nullopt;
}

bool ProgramSymbols::isInside(std::uint64_t offset, std::uint64_t size) const
{
    return offset <= m_size && size <= m_size - offset;
}

std::string_view ProgramSymbols::nameAt(std::uint32_t offset) const
{
    if (offset >= m_names.size())
        return {};
    const std::string_view rest = m_names.substr(offset);
    return rest.substr(0, rest.find('\0'));
}
