# SPDX-License-Identifier: GPL-3.0-or-later
#
# Makes release binaries identical in any build folder, so that anybody can check that a published archive was built from the
# published source. Development builds keep the real paths for debuggers.

# The compiler applies the last matching prefix, and the build folder may be inside the source folder.
foreach(prefix IN ITEMS "${CMAKE_SOURCE_DIR}=." "${CMAKE_BINARY_DIR}=build")
    add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-ffile-prefix-map=${prefix}>")
endforeach()
