# SPDX-License-Identifier: GPL-3.0-or-later
#
# What the released archive has besides the shared data: the program with Qt beside it, its launcher, and the scripts that
# put it into a person's home. `cmake --install` leaves it out unless the component is asked for:
#     cmake --install build --component data --prefix FOLDER
#     cmake --install build --component archive --strip --prefix FOLDER

# The same program, which looks for libraries beside itself. As DT_RPATH this also counts for what the libraries and the
# plug-ins need in their turn, so these stay as the distribution built them, and nothing is handed down to the programs that
# it starts, as the environment would be. The system's libraries come before the fallback ones, see GatherLibraries.cmake.
add_executable(orvanebreak-program EXCLUDE_FROM_ALL $<TARGET_OBJECTS:orvanebreak>)
target_link_libraries(orvanebreak-program PRIVATE $<TARGET_PROPERTY:orvanebreak,LINK_LIBRARIES>)
add_dependencies(orvanebreak-program orvane-modules)
target_link_options(orvanebreak-program PRIVATE LINKER:--disable-new-dtags)
set(system_folders /usr/lib64 /usr/lib)
if(CMAKE_LIBRARY_ARCHITECTURE)
    list(PREPEND system_folders "/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
endif()
set_target_properties(orvanebreak-program PROPERTIES
    AUTOMOC OFF
    LINKER_LANGUAGE CXX
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/archive"
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN/../lib;${system_folders};$ORIGIN/../lib/fallback")
install(TARGETS orvanebreak-program RUNTIME DESTINATION bin COMPONENT archive EXCLUDE_FROM_ALL)

set(archive_sources "${CMAKE_SOURCE_DIR}/packaging/archive")
set(archive_binaries "${CMAKE_CURRENT_BINARY_DIR}/archive")
configure_file("${archive_sources}/installation.sh.in" "${archive_binaries}/installation.sh" @ONLY)
install(PROGRAMS "${archive_sources}/orvanebreak" DESTINATION bin COMPONENT archive EXCLUDE_FROM_ALL)
install(FILES "${archive_sources}/qt.conf" DESTINATION bin COMPONENT archive EXCLUDE_FROM_ALL)
install(FILES "${archive_binaries}/installation.sh" DESTINATION share/OrvaneBreak COMPONENT archive EXCLUDE_FROM_ALL)
# Only its arguments count: the installation in a home writes its own path into it.
install(FILES "${CMAKE_BINARY_DIR}/OrvaneBreak/${ORVANE_APP_ID}.service" DESTINATION share/dbus-1/services
        COMPONENT archive EXCLUDE_FROM_ALL)
install(PROGRAMS "${archive_sources}/install" "${archive_sources}/uninstall" DESTINATION . COMPONENT archive EXCLUDE_FROM_ALL)
install(FILES "${CMAKE_SOURCE_DIR}/LICENSE" DESTINATION . COMPONENT archive EXCLUDE_FROM_ALL)

configure_file("${CMAKE_SOURCE_DIR}/cmake/GatherLibraries.cmake.in" "${archive_binaries}/GatherLibraries.cmake" @ONLY)
install(SCRIPT "${archive_binaries}/GatherLibraries.cmake" COMPONENT archive EXCLUDE_FROM_ALL)
