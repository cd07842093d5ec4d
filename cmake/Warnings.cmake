# SPDX-License-Identifier: GPL-3.0-or-later
#
# One interface target that every target of this project links privately, so that warnings and sanitizers do not apply to
# third-party code.

add_library(OrvaneCompileOptions INTERFACE)
target_compile_options(OrvaneCompileOptions INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast
                              -Woverloaded-virtual -Wsuggest-override>)
target_compile_definitions(OrvaneCompileOptions INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH QT_NO_KEYWORDS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
# In unity builds local names of one file may shadow constants of another, and no file is the main file.
if(CMAKE_UNITY_BUILD)
    target_compile_options(OrvaneCompileOptions INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-shadow -Wno-subobject-linkage>)
endif()

if(ORVANE_WARNINGS_AS_ERRORS)
    target_compile_options(OrvaneCompileOptions INTERFACE -Werror)
endif()
if(ORVANE_SANITIZE)
    target_compile_options(OrvaneCompileOptions INTERFACE
        -fsanitize=${ORVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(OrvaneCompileOptions INTERFACE -fsanitize=${ORVANE_SANITIZE})
    # With sanitizers and optimisation GCC gives this warning without reason; the release build has it.
    target_compile_options(OrvaneCompileOptions INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
