# SPDX-License-Identifier: GPL-3.0-or-later
#
# Runs clang-tidy at every compilation, so that an unchanged file is not checked again.

option(ORVANE_CLANG_TIDY "Run clang-tidy on every file that is compiled" OFF)

if(ORVANE_CLANG_TIDY)
    find_program(CLANG_TIDY clang-tidy REQUIRED)
    set(CMAKE_CXX_CLANG_TIDY "${CLANG_TIDY};--quiet;--extra-arg=-Wno-unknown-warning-option")
    # Generated files are below the build folder: a single cheap check is enabled there.
    file(WRITE "${CMAKE_BINARY_DIR}/.clang-tidy" "Checks: '-*,misc-definitions-in-headers'\n")
endif()
