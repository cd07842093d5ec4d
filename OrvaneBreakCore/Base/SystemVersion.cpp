// SPDX-License-Identifier: GPL-3.0-or-later
#include "SystemVersion.h"

#include <QVersionNumber>

#include <sys/utsname.h>

using namespace Qt::StringLiterals;

SystemVersion SystemVersion::current()
{
    utsname names = {};
    return uname(&names) == 0 ? parse(names.release) : SystemVersion();
}

SystemVersion SystemVersion::parse(const char *release)
{
    const QVersionNumber version = QVersionNumber::fromString(QString::fromLatin1(release));
    return {version.majorVersion(), version.minorVersion(), version.microVersion()};
}

QString SystemVersion::clientText() const
{
    return u"macOS %1.%2"_s.arg(major).arg(minor);
}
