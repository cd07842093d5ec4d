# SPDX-License-Identifier: GPL-3.0-or-later
#
# The contents of the released archive besides the shared data: the program with its own Qt, its launcher, and the scripts that
# install it into the home directory. `cmake --install` omits them unless the component is requested:
#     cmake --install build --component data --prefix FOLDER
#     cmake --install build --component archive --strip --prefix FOLDER

# The same program with a search path relative to itself. DT_RPATH also applies to the dependencies of libraries and plug-ins,
# so these need no changes, and unlike an environment variable it is not inherited by child processes. The system's libraries
# take precedence over the fallback ones, see GatherLibraries.cmake.
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
# Only the arguments matter: installing into the home directory replaces the path.
install(FILES "${CMAKE_BINARY_DIR}/OrvaneBreak/${ORVANE_APP_ID}.service" DESTINATION share/dbus-1/services
        COMPONENT archive EXCLUDE_FROM_ALL)
install(PROGRAMS "${archive_sources}/install" "${archive_sources}/uninstall" DESTINATION . COMPONENT archive EXCLUDE_FROM_ALL)
install(FILES "${CMAKE_SOURCE_DIR}/LICENSE" DESTINATION . COMPONENT archive EXCLUDE_FROM_ALL)

configure_file("${CMAKE_SOURCE_DIR}/cmake/GatherLibraries.cmake.in" "${archive_binaries}/GatherLibraries.cmake" @ONLY)
install(SCRIPT "${archive_binaries}/GatherLibraries.cmake" COMPONENT archive EXCLUDE_FROM_ALL)
