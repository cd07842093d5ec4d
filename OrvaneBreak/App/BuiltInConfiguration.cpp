// SPDX-License-Identifier: GPL-3.0-or-later
#include "ServerChannel.h"

// Part of the executable and not of the library: the desktop tests build one that talks to a server of
// theirs.
ServerChannel::Configuration ServerChannel::builtInConfiguration()
{
    return {QStringLiteral(ORVANE_SERVER_BASE), QByteArrayLiteral(ORVANE_PUBLIC_KEY_B64)};
}
