# SPDX-License-Identifier: GPL-3.0-or-later
#
# Instruments the shipped program's code for tools/measure-coverage. Test code is not instrumented.

option(ORVANE_COVERAGE "Count which lines of OrvaneBreak and OrvaneBreakCore run" OFF)

if(ORVANE_COVERAGE)
    add_link_options(--coverage)
endif()

# orvane_count_lines(): instruments the targets that are defined after it in this folder and the folders below.
macro(orvane_count_lines)
    if(ORVANE_COVERAGE)
        add_compile_options(-O0 --coverage -fprofile-update=atomic)
    endif()
endmacro()

# orvane_count_to_the_end(TARGET): writes a test program's counters even if it does not exit normally.
function(orvane_count_to_the_end target)
    if(ORVANE_COVERAGE)
        target_sources(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests/Support/CountedEnds.cpp)
    endif()
endfunction()
