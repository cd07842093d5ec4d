# SPDX-License-Identifier: GPL-3.0-or-later
#
# AppStream metadata, icons and manuals.

# The makers' web site serves docs/pictures.
string(REGEX REPLACE "/+$" "" website_pictures "${ORVANE_WEBSITE_URL}")
string(APPEND website_pictures "/pictures")

# A version is listed once CHANGELOG.md gives its date.
set(metainfo_releases "")
string(REPLACE "." "\\." version_pattern "${PROJECT_VERSION}")
file(STRINGS "${CMAKE_SOURCE_DIR}/CHANGELOG.md" release_heading REGEX "^## \\[?${version_pattern}\\]? - [0-9-]+$")
if(release_heading MATCHES "([0-9]+-[0-9]+-[0-9]+)$")
    set(metainfo_releases "  <releases>\n    <release version=\"${PROJECT_VERSION}\" date=\"${CMAKE_MATCH_1}\"/>\n  </releases>\n")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/CHANGELOG.md")

set(desktop_files "${CMAKE_CURRENT_BINARY_DIR}/desktop-files")
configure_file("${CMAKE_SOURCE_DIR}/packaging/metainfo.xml.in" "${desktop_files}/${ORVANE_APP_ID}.metainfo.xml" @ONLY)
install(FILES "${desktop_files}/${ORVANE_APP_ID}.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo" COMPONENT data)

# A separate component, because packages compress the manual.
foreach(language IN ITEMS "" .fr)
    configure_file("${CMAKE_SOURCE_DIR}/packaging/man/orvanebreak${language}.1.in" "${desktop_files}/orvanebreak${language}.1"
                   @ONLY)
endforeach()
install(FILES "${desktop_files}/orvanebreak.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT manual)
install(FILES "${desktop_files}/orvanebreak.fr.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/fr/man1" RENAME orvanebreak.1
        COMPONENT manual)
