// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QString>

#include <signal.h>
#include <sys/prctl.h>

/// A private session bus, which ends with this object.
class SessionBusDaemon
{
public:
    SessionBusDaemon()
    {
        using namespace Qt::StringLiterals;
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        // The bus must also end if the test crashes.
        m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
        m_process.start(u"dbus-daemon"_s, {u"--session"_s, u"--print-address"_s, u"--nofork"_s});
        while (!m_process.canReadLine() && m_process.waitForReadyRead(10'000)) {
        }
        m_address = QString::fromLatin1(m_process.readLine()).trimmed();
    }

    ~SessionBusDaemon() { stop(); }
    SessionBusDaemon(const SessionBusDaemon &) = delete;
    SessionBusDaemon &operator=(const SessionBusDaemon &) = delete;

    void stop()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// Empty when the daemon could not be started.
    [[nodiscard]] const QString &address() const { return m_address; }

private:
    QProcess m_process;
    QString m_address;
};
