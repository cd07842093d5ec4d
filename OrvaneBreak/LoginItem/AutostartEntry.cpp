// SPDX-License-Identifier: GPL-3.0-or-later
#include "AutostartEntry.h"

#include "UserFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The number of bytes read. An entry has a few lines.
constexpr qint64 maxEntrySize = 65536;

/// The keys of the group "Desktop Entry", without the localised ones.
QHash<QString, QString> entryKeys(const QString &path)
{
    QHash<QString, QString> keys;
    const QFileInfo information(path);
    QFile file(path);
    if (!information.isFile() || !file.open(QIODevice::ReadOnly))
        return keys;
    bool isInGroup = false;
    const QStringList lines = QString::fromUtf8(file.read(maxEntrySize)).split(u'\n');
    for (const QString &line : lines) {
        const QString text = line.trimmed();
        if (text.startsWith(u'['))
            isInGroup = text == "[Desktop Entry]"_L1;
        else if (isInGroup && text.contains(u'=') && !text.startsWith(u'#'))
            keys.insert(text.section(u'=', 0, 0).trimmed(), text.section(u'=', 1).trimmed());
    }
    return keys;
}

bool namesOneOf(const QString &list, const QStringList &desktops)
{
    const QStringList names = list.split(u';', Qt::SkipEmptyParts);
    return std::any_of(names.begin(), names.end(),
                       [&](const QString &name) { return desktops.contains(name); });
}

/// A command-line argument for the Exec key: quoted, and escaped first by the rules for quoting, then by
/// those for strings.
QString quoted(const QString &argument)
{
    static const QRegularExpression reserved(uR"((["`$\\]))"_s);
    QString result = argument;
    result.replace(reserved, uR"(\\1)"_s);
    result.replace(u'\\', uR"(\\)"_s);
    result.replace(u'%', u"%%"_s);
    return u'"' + result + u'"';
}

/// The program in the value of an Exec key, whose first argument may be quoted; the inverse of `quoted()`.
QString programIn(QString command)
{
    static const QRegularExpression escaped(uR"(\\(.))"_s);
    static const QRegularExpression firstArgument(uR"re(^"((?:[^"\\]|\\.)*)"|^([^\s"]+))re"_s);
    const QRegularExpressionMatch match = firstArgument.match(command.replace(uR"(\\)"_s, uR"(\)"_s));
    QString program = match.captured(1).replace(escaped, uR"(\1)"_s) + match.captured(2);
    return program.replace(u"%%"_s, u"%"_s);
}

bool isProgram(const QString &name)
{
    const QString path = QStandardPaths::findExecutable(name);
    // Some tools switch an entry off by letting it start the program that does nothing.
    return !path.isEmpty() && QFileInfo(path).fileName() != "false"_L1;
}

/// Whether what an entry with these keys starts exists.
bool startsAProgram(const QHash<QString, QString> &keys)
{
    return isProgram(programIn(keys.value(u"Exec"_s))) &&
           (!keys.contains(u"TryExec"_s) || isProgram(keys.value(u"TryExec"_s)));
}

/// The launcher script beside the program of a released archive; otherwise the program itself.
QString launcherOf(const QString &executable)
{
    static constexpr auto ending = "-program"_L1;
    const QString launcher = executable.endsWith(ending) ? executable.chopped(ending.size()) : executable;
    return QFileInfo(launcher).isExecutable() ? launcher : executable;
}

QString autostartFolder()
{
    return QFile::decodeName((UserFolders::configuration() / "autostart").c_str());
}

} // namespace

AutostartEntry::AutostartEntry(Parameters parameters)
    : m_parameters(std::move(parameters))
{
}

AutostartEntry::Parameters AutostartEntry::standardParameters(const QString &applicationId)
{
    return {autostartFolder() + u'/' + applicationId + u".desktop"_s,
            stableExecutable(QCoreApplication::applicationFilePath()),
            qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts)};
}

QString AutostartEntry::stableExecutable(const QString &executable)
{
    static constexpr auto versions = "/versions/"_L1;
    QString command = launcherOf(executable);
    const qsizetype begin = command.lastIndexOf(versions);
    const qsizetype end = begin < 0 ? begin : command.indexOf(u'/', begin + versions.size());
    if (end < 0)
        return command;
    const QString stable = command.first(begin) + u"/current"_s + command.sliced(end);
    const QString stableFile = QFileInfo(stable).canonicalFilePath();
    const bool isSameFile = !stableFile.isEmpty() && stableFile == QFileInfo(command).canonicalFilePath();
    return isSameFile ? stable : command;
}

bool AutostartEntry::isEnabled() const
{
    const QHash<QString, QString> keys = entryKeys(m_parameters.file);
    return isSwitchedOn(keys) && (!m_parameters.isLocal || startsAProgram(keys));
}

void AutostartEntry::renew()
{
    const QHash<QString, QString> keys = entryKeys(m_parameters.file);
    const QString program = programIn(keys.value(u"Exec"_s));
    const bool isOurs = QFileInfo(program).fileName() == QFileInfo(m_parameters.executable).fileName();
    if (isOurs && isSwitchedOn(keys) && !startsAProgram(keys))
        static_cast<void>(setEnabled(true));
}

bool AutostartEntry::isSwitchedOn(const QHash<QString, QString> &keys) const
{
    const bool isApplication = keys.value(u"Type"_s) == "Application"_L1 && !keys.value(u"Exec"_s).isEmpty();
    const bool isSwitchedOff =
        keys.value(u"Hidden"_s) == "true"_L1 || keys.value(u"X-GNOME-Autostart-enabled"_s) == "false"_L1;
    const bool isForOthers =
        (keys.contains(u"OnlyShowIn"_s) && !namesOneOf(keys.value(u"OnlyShowIn"_s), m_parameters.desktops)) ||
        namesOneOf(keys.value(u"NotShowIn"_s), m_parameters.desktops);
    return isApplication && !isSwitchedOff && !isForOthers;
}

bool AutostartEntry::setEnabled(bool enabled)
{
    if (!enabled) {
        QFile file(m_parameters.file);
        const bool isPresent = QFileInfo(m_parameters.file).isSymLink() || file.exists();
        const bool isAbsent = !isPresent || file.remove();
        if (!isAbsent)
            logFailure(m_parameters.file + u": "_s + file.errorString());
        return isAbsent;
    }
    const QString folder = QFileInfo(m_parameters.file).path();
    if (!QDir().mkpath(folder)) {
        logFailure(folder + u": the folder cannot be created"_s);
        return false;
    }
    QSaveFile file(m_parameters.file);
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(content().toUtf8()) >= 0 && file.commit();
    if (!isWritten)
        logFailure(m_parameters.file + u": "_s + file.errorString());
    return isWritten;
}

QString AutostartEntry::content() const
{
    return u"[Desktop Entry]\nType=Application\nName=OrvaneBreak\nExec=%1\nIcon=orvanebreak\nTerminal=false\n"
           "X-GNOME-Autostart-enabled=true\n"_s.arg(quoted(m_parameters.executable));
}
