# SPDX-License-Identifier: GPL-3.0-or-later
#
# The Debian package, which tools/package-debian makes of the build. It holds the components "program" and "data", and "debian"
# for files that differ from a manual installation.

set(debian_revision 1)
set(debian_maintainer "OrvaneBreak makers <${ORVANE_SUPPORT_EMAIL}>")
set(debian_sources "${CMAKE_SOURCE_DIR}/packaging/debian")
set(debian_files "${CMAKE_CURRENT_BINARY_DIR}/debian")

configure_file("${debian_sources}/copyright.in" "${debian_files}/copyright" @ONLY)
install(FILES "${debian_files}/copyright" DESTINATION share/doc/orvanebreak COMPONENT debian EXCLUDE_FROM_ALL)
install(FILES "${debian_sources}/lintian-overrides" DESTINATION share/lintian/overrides RENAME orvanebreak
        COMPONENT debian EXCLUDE_FROM_ALL)
configure_file("${CMAKE_SOURCE_DIR}/cmake/DebianDocuments.cmake.in" "${debian_files}/DebianDocuments.cmake" @ONLY)
install(SCRIPT "${debian_files}/DebianDocuments.cmake" COMPONENT debian EXCLUDE_FROM_ALL)

block()
    set(CMAKE_INSTALL_FULL_BINDIR /usr/bin)
    configure_file("${CMAKE_SOURCE_DIR}/packaging/application.service.in" "${debian_files}/${ORVANE_APP_ID}.service" @ONLY)
endblock()
install(FILES "${debian_files}/${ORVANE_APP_ID}.service" DESTINATION share/dbus-1/services COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_NAME orvanebreak)
set(CPACK_PACKAGE_CONTACT "${debian_maintainer}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "break reminder for the eyes")
set(CPACK_PACKAGE_HOMEPAGE_URL "${ORVANE_WEBSITE_URL}")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
set(CPACK_COMPONENTS_ALL program data debian)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${debian_revision})
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# Moves the debug information into a separate package, which is needed to read crash reports.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Every 20 minutes OrvaneBreak covers every screen with a dark translucent
overlay, asks you to look 6 metres away, counts down 20 seconds on a ring
and disappears by itself. Escape ends a break; breaks are skipped while
you are away. The interface is in French.")

# dpkg-shlibdeps finds the linked libraries. The Wayland plug-in is loaded at run time: the program starts on X11 without it, but
# then its breaks cover nothing on most current desktops.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS qt6-wayland)
# The single instance and the tray, HTTPS, audible sound, and the desktop's mouse cursor theme, which Qt loads on X11.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "default-dbus-session-bus | dbus-session-bus, ca-certificates, libcanberra-pulse, libxcursor1")
# The desktop's light or dark preference, reports of crashes that the program could not write itself, and emoji in messages.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "xdg-desktop-portal, systemd-coredump, fonts-noto-color-emoji")
include(CPack)
