# SPDX-License-Identifier: GPL-3.0-or-later
#
# What compiler and linker add to optimised builds so that a memory error ends the process before it can be exploited: checked
# stack frames and buffer functions, checked jumps and returns where processor and compiler know them, tables of the linker
# that are read-only from the start, and programs at random addresses.

if(ORVANE_SANITIZE OR NOT CMAKE_BUILD_TYPE MATCHES "^(Rel|MinSizeRel)")
    return()
endif()

include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()
check_cxx_compiler_flag(-fcf-protection ORVANE_HAS_CF_PROTECTION)
add_compile_options(-fstack-protector-strong $<$<BOOL:${ORVANE_HAS_CF_PROTECTION}>:-fcf-protection>)
# Compilers of some distributions define another level themselves.
add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
add_link_options(LINKER:-z,relro LINKER:-z,now)
