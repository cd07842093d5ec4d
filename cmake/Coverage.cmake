# SPDX-License-Identifier: GPL-3.0-or-later
#
# Counts how often each line of what users run is reached, for tools/measure-coverage. Tests are built as always.

option(ORVANE_COVERAGE "Count which lines of OrvaneBreak and OrvaneBreakCore run" OFF)

if(ORVANE_COVERAGE)
    add_link_options(--coverage)
endif()

# orvane_count_lines(): in a folder, before its targets: they count their lines, and so do those of the folders below.
macro(orvane_count_lines)
    if(ORVANE_COVERAGE)
        add_compile_options(-O0 --coverage -fprofile-update=atomic)
    endif()
endmacro()

# orvane_count_to_the_end(TARGET): what a program of the tests does before it is killed counts as well.
function(orvane_count_to_the_end target)
    if(ORVANE_COVERAGE)
        target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests/Support/CountedEnds.cpp)
    endif()
endfunction()
