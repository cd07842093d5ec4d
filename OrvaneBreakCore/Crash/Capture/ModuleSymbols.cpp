// SPDX-License-Identifier: GPL-3.0-or-later
#include "ModuleSymbols.h"

#include "FileDescriptor.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>

ModuleSymbols::ModuleSymbols(const char *file)
{
    map(file);
    if (m_image)
        locateTable();
}

ModuleSymbols::~ModuleSymbols()
{
    if (m_image)
        munmap(const_cast<char *>(m_image), m_size);
}

void ModuleSymbols::map(const char *path)
{
    const FileDescriptor file(open(path, O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0)
        return;
    const auto size = static_cast<std::size_t>(status.st_size);
    void *image = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (image == MAP_FAILED)
        return;
    m_image = static_cast<const char *>(image);
    m_size = size;
}

void ModuleSymbols::locateTable()
{
    const auto *header = reinterpret_cast<const ElfW(Ehdr) *>(m_image);
    if (!isInside(0, sizeof *header) || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 ||
        header->e_shentsize != sizeof(ElfW(Shdr)) ||
        !isInside(header->e_shoff, std::uint64_t{header->e_shnum} * sizeof(ElfW(Shdr))))
        return;
    const std::span sections(reinterpret_cast<const ElfW(Shdr) *>(m_image + header->e_shoff),
                             header->e_shnum);
    const ElfW(Shdr) *table = sectionOfType(sections, SHT_SYMTAB);
    if (!table)
        table = sectionOfType(sections, SHT_DYNSYM);
    if (!table || table->sh_link >= sections.size())
        return;
    const ElfW(Shdr) &names = sections[table->sh_link];
    if (!isInside(table->sh_offset, table->sh_size) || !isInside(names.sh_offset, names.sh_size))
        return;
    m_symbols = reinterpret_cast<const ElfW(Sym) *>(m_image + table->sh_offset);
    m_symbolCount = table->sh_size / sizeof(ElfW(Sym));
    m_names = {m_image + names.sh_offset, names.sh_size};
}

const ElfW(Shdr) * ModuleSymbols::sectionOfType(std::span<const ElfW(Shdr)> sections, unsigned type)
{
    const auto found = std::ranges::find(sections, type, &ElfW(Shdr)::sh_type);
    return found == sections.end() ? nullptr : &*found;
}

std::optional<ModuleSymbols::Symbol> ModuleSymbols::find(std::uint64_t address) const
{
    for (std::size_t index = 0; index < m_symbolCount; ++index) {
        const ElfW(Sym) &symbol = m_symbols[index];
        if (ELF64_ST_TYPE(symbol.st_info) == STT_FUNC && address >= symbol.st_value &&
            address - symbol.st_value < symbol.st_size)
            return Symbol{nameAt(symbol.st_name), address - symbol.st_value};
    }
    return std::nullopt;
}

bool ModuleSymbols::isInside(std::uint64_t offset, std::uint64_t size) const
{
    return offset <= m_size && size <= m_size - offset;
}

std::string_view ModuleSymbols::nameAt(std::uint32_t offset) const
{
    if (offset >= m_names.size())
        return {};
    const std::string_view rest = m_names.substr(offset);
    return rest.substr(0, rest.find('\0'));
}
