// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"

#include "PreferencesFile.h"
#include "PrivateFolder.h"
#include "UserFolders.h"

#include <QJsonDocument>

#include <system_error>

using State = PreferencesContent::State;

namespace {

std::filesystem::path absolutePath(const std::filesystem::path &file)
{
    std::error_code error;
    std::filesystem::path result = std::filesystem::absolute(file, error);
    return error ? file : result;
}

QByteArray json(const QJsonValue &value)
{
    return QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
}

/// Compares the JSON texts, because some different large integers are equal as QJsonValue.
bool isSame(const QJsonValue &first, const QJsonValue &second)
{
    return first.isUndefined() == second.isUndefined() && json(first) == json(second);
}

QJsonObject merged(QJsonObject values, const QHash<QString, QJsonValue> &changes)
{
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        if (change->isUndefined())
            values.remove(change.key());
        else
            values.insert(change.key(), *change);
    }
    return values;
}

} // namespace

JsonPreferences::JsonPreferences(const std::filesystem::path &file)
    : m_file(absolutePath(file))
    , m_watch(m_file)
{
    if (readPreferences(m_file).state == State::Damaged)
        putDamagedAside();
    refresh();
}

std::filesystem::path JsonPreferences::defaultFile()
{
    return UserFolders::configuration() / "OrvaneBreak" / "preferences.json";
}

QJsonValue JsonPreferences::value(const QString &key) const
{
    refresh();
    const auto unwritten = m_unwritten.constFind(key);
    return unwritten != m_unwritten.cend() ? *unwritten : m_stored.value(key);
}

void JsonPreferences::setValue(const QString &key, const QJsonValue &value)
{
    refresh();
    if (isSame(m_stored.value(key), value)) {
        m_unwritten.remove(key);
        return;
    }
    m_unwritten.insert(key, value);
    write();
}

void JsonPreferences::putDamagedAside()
{
    // Another process may have repaired the file before this one got the lock.
    PreferencesFile file(m_file);
    if (file.read().state == State::Damaged)
        file.moveAside();
}

void JsonPreferences::refresh() const
{
    if (m_watch.mayHaveChanged())
        m_isStale = true;
    if (!m_isStale)
        return;
    const PreferencesContent content = readPreferences(m_file);
    m_isStale = content.state == State::Unreadable;
    if (content.state == State::Values || content.state == State::NoFile)
        m_stored = content.values;
}

void JsonPreferences::write()
{
    createPrivateFolder(m_file.parent_path());
    if (m_watch.follow())
        m_isStale = true;
    PreferencesFile file(m_file);
    const PreferencesContent content = file.read();
    if (content.state == State::Unreadable)
        return;
    const bool isDamaged = content.state == State::Damaged;
    const QByteArray bytes =
        QJsonDocument(merged(isDamaged ? m_stored : content.values, m_unwritten)).toJson();
    // A file that cannot be read back would count as damaged.
    const PreferencesContent written = parsePreferences(bytes);
    if (written.state != State::Values)
        return;
    if (!file.replace(bytes, isDamaged ? PreferencesFile::Old::PutAside : PreferencesFile::Old::Dropped))
        return;
    m_stored = written.values;
    m_unwritten.clear();
    m_isStale = m_watch.mayHaveChanged(file.temporaryName());
}
