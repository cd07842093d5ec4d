# SPDX-License-Identifier: GPL-3.0-or-later
#
# What users run is the same, byte for byte, in whatever folder it was built: with it anybody can check that a published
# archive was built from the published source. Daily work keeps the real paths, which debuggers want.

# The compiler takes the last one that fits, and the build folder may lie in the source folder.
foreach(prefix IN ITEMS "${CMAKE_SOURCE_DIR}=." "${CMAKE_BINARY_DIR}=build")
    add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-ffile-prefix-map=${prefix}>")
endforeach()
