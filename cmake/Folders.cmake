# SPDX-License-Identifier: GPL-3.0-or-later
#
# Each folder of what users run is one static library, which tests link as well. tools/check-layers sees to it that a library
# names exactly those that it includes headers of.

# orvane_add_library(name SOURCES files... [PUBLIC libraries...] [PRIVATE libraries...]): the library of this folder. PUBLIC are
# those that its headers need, PRIVATE those that only its sources need. Headers are included by their bare names.
function(orvane_add_library target)
    cmake_parse_arguments(LIBRARY "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    add_library(${target} STATIC ${LIBRARY_SOURCES})
    target_include_directories(${target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${target} PUBLIC ${LIBRARY_PUBLIC} PRIVATE OrvaneCompileOptions ${LIBRARY_PRIVATE})
endfunction()
