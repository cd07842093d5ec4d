// SPDX-License-Identifier: GPL-3.0-or-later
#include "ServerChannel.h"

// Compiled into the executable, not the library: the desktop tests build an executable with another
// configuration.
ServerChannel::Configuration ServerChannel::builtInConfiguration()
{
    return {QStringLiteral(ORVANE_SERVER_BASE), QByteArrayLiteral(ORVANE_PUBLIC_KEY_B64)};
}
