// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QStringList>

#include <signal.h>
#include <sys/prctl.h>

/// An X server without a monitor at a free display, named by DISPLAY until it ends.
class VirtualXServer
{
public:
    explicit VirtualXServer(const QStringList &arguments = {})
    {
        using namespace Qt::StringLiterals;
        m_process.setStandardErrorFile(QProcess::nullDevice());
        // It ends with a test that crashes, too.
        m_process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
        m_process.start(u"Xvfb"_s, QStringList{u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"640x480x24"_s,
                                               u"-nolisten"_s, u"tcp"_s, u"-noreset"_s, u"-ac"_s} +
                                       arguments);
        while (!m_process.canReadLine() && m_process.waitForReadyRead(20'000)) {
        }
        const QByteArray number = m_process.readLine().trimmed();
        isRunning = !number.isEmpty();
        qputenv("DISPLAY", ':' + number);
    }

    ~VirtualXServer() { stop(); }
    VirtualXServer(const VirtualXServer &) = delete;
    VirtualXServer &operator=(const VirtualXServer &) = delete;

    void stop()
    {
        m_process.terminate();
        m_process.waitForFinished();
        qunsetenv("DISPLAY");
    }

    bool isRunning = false;

private:
    QProcess m_process;
};
