// SPDX-License-Identifier: GPL-3.0-or-later
#include "ServerChannel.h"

/// The desktop tests start a server with a key of its own, and tell the program of theirs where it is.
ServerChannel::Configuration ServerChannel::builtInConfiguration()
{
    return {qEnvironmentVariable("ORVANE_TEST_SERVER", QStringLiteral("https://orvanebreak.invalid")),
            qgetenv("ORVANE_TEST_PUBLIC_KEY")};
}
