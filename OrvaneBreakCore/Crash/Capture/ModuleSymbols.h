// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <elf.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// The names of the running program's functions, from the symbol table of its executable. The table is mapped
/// but not read until the first lookup, so it costs nothing before. A stripped or damaged executable has no
/// names.
class ProgramSymbols
{
public:
    struct Symbol
    {
        std::string_view name;    ///< Mangled; "c++filt" makes it readable.
        std::uint64_t offset = 0; ///< From the beginning of the function, in bytes.
    };

    /// Maps the executable of this process.
    ProgramSymbols();
    ~ProgramSymbols();
    ProgramSymbols(const ProgramSymbols &) = delete;
    ProgramSymbols &operator=(const ProgramSymbols &) = delete;

    /// The function that contains `address`, which is relative to the executable and not to memory; absent
    /// when there is none. Safe in signal handlers.
    [[nodiscard]] std::optional<Symbol> find(std::uint64_t address) const;

private:
    void map();
    void locateTable();
    [[nodiscard]] bool isInside(std::uint64_t offset, std::uint64_t size) const;
    [[nodiscard]] std::string_view nameAt(std::uint32_t offset) const;

    const char *m_image = nullptr;
    std::size_t m_size = 0;
    const ElfW(Sym) *m_symbols = nullptr;
    std::size_t m_symbolCount = 0;
    std::string_view m_names;
};
