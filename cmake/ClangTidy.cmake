# SPDX-License-Identifier: GPL-3.0-or-later
#
# Runs clang-tidy at every compilation, so that an unchanged file is not checked again. Its version is named, as that of
# clang-format is in tools/check-format, because each version finds and formats something else; Debian 12 and later have it.

option(ORVANE_CLANG_TIDY "Run clang-tidy on every file that is compiled" OFF)

if(ORVANE_CLANG_TIDY)
    find_program(CLANG_TIDY clang-tidy-19 REQUIRED)
    set(CMAKE_CXX_CLANG_TIDY "${CLANG_TIDY};--quiet;--extra-arg=-Wno-unknown-warning-option")
    # Generated files are below the build folder: a single cheap check is enabled there.
    file(WRITE "${CMAKE_BINARY_DIR}/.clang-tidy" "Checks: '-*,misc-definitions-in-headers'\n")
endif()
