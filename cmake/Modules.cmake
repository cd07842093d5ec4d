# SPDX-License-Identifier: GPL-3.0-or-later
#
# The modules: parts of the program that it loads when it first needs them. They stand in lib/orvanebreak/modules beside its bin
# folder, in the build tree as in every installation.
# Not straight in a folder of lib: the maker of packages takes that for libraries which everybody links.
set(ORVANE_MODULES_FOLDER lib/orvanebreak/modules)
add_custom_target(orvane-modules)

# What a module says of itself before it is loaded.
set(ORVANE_MODULE_DESCRIPTION "${CMAKE_CURRENT_BINARY_DIR}/modules")
file(CONFIGURE OUTPUT "${ORVANE_MODULE_DESCRIPTION}/module.json" CONTENT "{\"version\": \"@PROJECT_VERSION@\"}\n" @ONLY)

# orvane_add_module(name SOURCES files... LIBRARIES targets...): the module NAME.so.
function(orvane_add_module name)
    cmake_parse_arguments(MODULE "" "" "SOURCES;LIBRARIES" ${ARGN})
    set(target "orvane-module-${name}")
    add_library(${target} MODULE ${MODULE_SOURCES})
    target_include_directories(${target} PRIVATE "${ORVANE_MODULE_DESCRIPTION}")
    target_link_libraries(${target} PRIVATE OrvaneCompileOptions ${MODULE_LIBRARIES})
    # What the libraries that it is made of have in common with the program stays its own.
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
