// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"

#include "PrivateFolder.h"
#include "UserFolders.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <system_error>
#include <utility>

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

struct Merged
{
    PreferencesMembers members;
    QByteArray json;
    QMap<QString, QJsonValue> heldBack; ///< The changes without which the rest fits.
};

Merged mergedAsFarAsItFits(const PreferencesMembers &members, const QMap<QString, QJsonValue> &changes)
{
    Merged result{members, members.json(), {}};
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        PreferencesMembers candidate = result.members;
        candidate.set(change.key(), *change);
        QByteArray json = candidate.json();
        if (json.size() <= maxPreferencesSize)
            result = {std::move(candidate), std::move(json), std::move(result.heldBack)};
        else
            result.heldBack.insert(change.key(), *change);
    }
    return result;
}

} // namespace

JsonPreferences::JsonPreferences(const std::filesystem::path &file, std::chrono::milliseconds retryInterval)
    : m_file(absolutePath(file))
    , m_watch(m_file)
{
    static_cast<void>(m_watch.mayHaveChanged());
    if (load() == State::Damaged) {
        putDamagedAside();
        m_isStale = true;
    }
    m_retry.setInterval(retryInterval);
    m_retry.setTimerType(Qt::VeryCoarseTimer);
    QObject::connect(&m_retry, &QTimer::timeout, &m_retry, [this] { store(); });
}

JsonPreferences::~JsonPreferences()
{
    if (!m_unwritten.isEmpty())
        static_cast<void>(write());
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
    store();
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
    if (m_isStale)
        static_cast<void>(load());
}

State JsonPreferences::load() const
{
    const PreferencesContent content = readPreferences(m_file);
    m_isStale = content.state == State::Unreadable;
    if (content.state == State::Values || content.state == State::NoFile)
        m_stored = content.members;
    return content.state;
}

void JsonPreferences::store()
{
    if (write())
        m_retry.stop();
    else if (!m_retry.isActive())
        m_retry.start();
}

bool JsonPreferences::write()
{
    createPrivateFolder(m_file.parent_path());
    if (m_watch.follow())
        m_isStale = true;
    PreferencesFile file(m_file);
    const PreferencesContent content = file.read(m_stored);
    if (content.state == State::Unreadable)
        return false;
    const bool isDamaged = content.state == State::Damaged;
    const bool isTorn = isDamaged || content.state == State::Empty;
    const Merged merged = mergedAsFarAsItFits(isTorn ? m_stored : content.members, m_unwritten);
    if (merged.heldBack.size() == m_unwritten.size())
        return true;
    if (!file.replace(merged.json,
                      isDamaged ? PreferencesFile::Old::PutAside : PreferencesFile::Old::Dropped))
        return false;
    m_stored = merged.members;
    m_unwritten = merged.heldBack;
    m_isStale = m_watch.mayHaveChanged(file.temporaryName());
    return true;
}
