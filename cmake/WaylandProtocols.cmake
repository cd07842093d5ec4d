# SPDX-License-Identifier: GPL-3.0-or-later
#
# Code generated from Wayland protocol descriptions, compiled without this project's warning flags.

find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
find_package(PlasmaWaylandProtocols REQUIRED)
pkg_get_variable(WAYLAND_PROTOCOLS_DIR wayland-protocols pkgdatadir)
if(NOT WAYLAND_PROTOCOLS_DIR)
    message(FATAL_ERROR "wayland-protocols is missing")
endif()

# orvane_add_wayland_protocols(target descriptions...): a static library with the marshalling code and the client headers.
function(orvane_add_wayland_protocols target)
    add_library(${target} STATIC)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/protocols")
    foreach(description IN LISTS ARGN)
        get_filename_component(protocol "${description}" NAME_WE)
        set(code "${folder}/${protocol}-protocol.c")
        set(header "${folder}/${protocol}-client-protocol.h")
        add_custom_command(
            OUTPUT "${code}" "${header}"
            COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
            COMMAND ${WAYLAND_SCANNER} private-code "${description}" "${code}"
            COMMAND ${WAYLAND_SCANNER} client-header "${description}" "${header}"
            DEPENDS "${description}"
            VERBATIM)
        target_sources(${target} PRIVATE "${code}" "${header}")
    endforeach()
    set_target_properties(${target} PROPERTIES AUTOMOC OFF ORVANE_PROTOCOL_DESCRIPTIONS "${ARGN}")
    target_include_directories(${target} SYSTEM INTERFACE "${folder}")
    target_link_libraries(${target} PUBLIC PkgConfig::WAYLAND_CLIENT)
endfunction()

# orvane_add_wayland_server_headers(target protocols...): server headers of the same protocols, for the tests' compositor.
function(orvane_add_wayland_server_headers target)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/protocols")
    foreach(library IN LISTS ARGN)
        get_target_property(descriptions ${library} ORVANE_PROTOCOL_DESCRIPTIONS)
        foreach(description IN LISTS descriptions)
            get_filename_component(protocol "${description}" NAME_WE)
            set(header "${folder}/${protocol}-server-protocol.h")
            add_custom_command(
                OUTPUT "${header}"
                COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
                COMMAND ${WAYLAND_SCANNER} server-header "${description}" "${header}"
                DEPENDS "${description}"
                VERBATIM)
            target_sources(${target} PRIVATE "${header}")
        endforeach()
        target_link_libraries(${target} PRIVATE ${library})
    endforeach()
    target_include_directories(${target} SYSTEM PRIVATE "${folder}")
endfunction()
