// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <elf.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

/// The names of the functions of a program, library or plug-in, from the symbol table of its file; of a
/// stripped file those that other modules can call. The table is mapped but not read until the first lookup,
/// so it costs nothing before. A damaged file has no names. Safe in signal handlers.
class ModuleSymbols
{
public:
    struct Symbol
    {
        std::string_view name;    ///< Mangled; "c++filt" makes it readable.
        std::uint64_t offset = 0; ///< From the beginning of the function, in bytes.
    };

    /// The executable of this process.
    static constexpr const char *program = "/proc/self/exe";

    /// Maps the file with the absolute path `file`.
    explicit ModuleSymbols(const char *file);
    ~ModuleSymbols();
    ModuleSymbols(const ModuleSymbols &) = delete;
    ModuleSymbols &operator=(const ModuleSymbols &) = delete;

    /// The function that contains `address`, which is relative to the module and not to memory; absent when
    /// there is none.
    [[nodiscard]] std::optional<Symbol> find(std::uint64_t address) const;

    /// The bytes of the file.
    [[nodiscard]] std::span<const char> image() const { return {m_image, m_size}; }

private:
    void map(const char *file);
    void locateTable();
    [[nodiscard]] static const ElfW(Shdr) *
        sectionOfType(std::span<const ElfW(Shdr)> sections, unsigned type);
    [[nodiscard]] bool isInside(std::uint64_t offset, std::uint64_t size) const;
    [[nodiscard]] std::string_view nameAt(std::uint32_t offset) const;

    const char *m_image = nullptr;
    std::size_t m_size = 0;
    const ElfW(Sym) *m_symbols = nullptr;
    std::size_t m_symbolCount = 0;
    std::string_view m_names;
};
