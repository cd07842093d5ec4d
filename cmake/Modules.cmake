# SPDX-License-Identifier: GPL-3.0-or-later
#
# The modules: plug-ins that the program loads on first use. They are in lib/orvanebreak/modules beside the bin folder, in the
# build tree and in every installation. They are two levels below lib because packaging tools treat files directly in a
# subfolder of lib as public shared libraries.
set(ORVANE_MODULES_FOLDER lib/orvanebreak/modules)
add_custom_target(orvane-modules)

# A module's metadata, which is read before the module is loaded.
set(ORVANE_MODULE_DESCRIPTION "${CMAKE_CURRENT_BINARY_DIR}/modules")
file(CONFIGURE OUTPUT "${ORVANE_MODULE_DESCRIPTION}/module.json" CONTENT "{\"version\": \"@PROJECT_VERSION@\"}\n" @ONLY)

# orvane_add_module(name SOURCES files... LIBRARIES targets...): the module NAME.so.
function(orvane_add_module name)
    cmake_parse_arguments(MODULE "" "" "SOURCES;LIBRARIES" ${ARGN})
    set(target "orvane-module-${name}")
    add_library(${target} MODULE ${MODULE_SOURCES})
    target_include_directories(${target} PRIVATE "${ORVANE_MODULE_DESCRIPTION}")
    target_link_libraries(${target} PRIVATE OrvaneCompileOptions ${MODULE_LIBRARIES})
    # Keep symbols of static libraries local to the module, because the program contains some of the same libraries.
    target_link_options(${target} PRIVATE LINKER:--exclude-libs=ALL)
    if(NOT ORVANE_SANITIZE)
        target_link_options(${target} PRIVATE LINKER:--no-undefined)
    endif()
    set_target_properties(${target} PROPERTIES
        PREFIX ""
        OUTPUT_NAME ${name}
        LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${ORVANE_MODULES_FOLDER}")
    add_dependencies(orvane-modules ${target})
    install(TARGETS ${target} LIBRARY DESTINATION ${ORVANE_MODULES_FOLDER} COMPONENT program)
    install(TARGETS ${target} LIBRARY DESTINATION ${ORVANE_MODULES_FOLDER} COMPONENT archive EXCLUDE_FROM_ALL)
endfunction()
