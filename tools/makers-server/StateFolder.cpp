// SPDX-License-Identifier: GPL-3.0-or-later
#include "StateFolder.h"

#include <QDir>
#include <QFile>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

StateFolder::StateFolder(QString path)
    : m_path(std::move(path))
{
    if (QDir(m_path).exists())
        return;
    const QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    if (!QDir().mkpath(m_path) || !QFile::setPermissions(m_path, ownerOnly))
        throw std::runtime_error((m_path + u": the folder cannot be made"_s).toStdString());
}

QString StateFolder::standardPath()
{
    const QString configured = qEnvironmentVariable("XDG_STATE_HOME");
    const QString states =
        QDir::isAbsolutePath(configured) ? configured : QDir::homePath() + u"/.local/state"_s;
    return states + u"/orvanebreak-makers-server"_s;
}

QString StateFolder::file(const QString &name) const
{
    return m_path + u'/' + name;
}
