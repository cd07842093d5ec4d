# SPDX-License-Identifier: GPL-3.0-or-later
#
# Everything that the makers of a build configure. The defaults are in the reserved top-level domain "invalid", which does not
# resolve: an unconfigured build contacts no server.

set(ORVANE_SERVER_BASE "https://orvanebreak.invalid" CACHE STRING
    "Address that the three endpoints of the makers' server are appended to, without a trailing slash")
set(ORVANE_PUBLIC_KEY_B64 "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=" CACHE STRING
    "Base64 of the 32-byte Ed25519 key that check-in answers are signed with")
set(ORVANE_SUPPORT_EMAIL "support@orvanebreak.invalid" CACHE STRING
    "Mail address offered to the user when a report cannot be sent")
set(ORVANE_WEBSITE_NAME "orvanebreak.invalid" CACHE STRING
    "Text of the link to the makers' web site")
set(ORVANE_WEBSITE_URL "https://orvanebreak.invalid/" CACHE STRING
    "Address of the makers' web site")
set(ORVANE_FEED_URL "https://orvanebreak.invalid/appcast.xml" CACHE STRING
    "Address of the update feed, written into Info.json as SUFeedURL")
set(ORVANE_UPDATE_PUBLIC_KEY_B64 "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=" CACHE STRING
    "Base64 of the 32-byte Ed25519 key that updates are signed with, written into Info.json as SUPublicEDKey")
set(ORVANE_APP_ID "ch.orvanelabs.OrvaneBreak" CACHE STRING
    "Reverse-domain identifier: the D-Bus name and the name of the desktop entry")

option(ORVANE_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" OFF)
set(ORVANE_SANITIZE "" CACHE STRING "Sanitizers for -fsanitize=, for example address,undefined")
option(ORVANE_FUZZ "Build tests/Fuzz for long runs with clang's libFuzzer" OFF)

# The program uses HTTPS only; plain HTTP is allowed for this machine, for testing.
foreach(address IN ITEMS ORVANE_SERVER_BASE ORVANE_FEED_URL ORVANE_WEBSITE_URL)
    if(NOT "${${address}}" MATCHES "^(https://[^/@]+|http://(127\\.[0-9.]+|\\[::1\\])(:[0-9]+)?)(/.*)?$")
        message(FATAL_ERROR "${address} is not an HTTPS address: ${${address}}")
    endif()
endforeach()
