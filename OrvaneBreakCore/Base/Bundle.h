// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

/// The installed resources: share/OrvaneBreak beside the program's bin folder. The build tree has the same
/// layout.
class Bundle
{
public:
    /// The bundle of the running program; needs the application object.
    [[nodiscard]] static Bundle main();

    /// The bundle in the share/OrvaneBreak folder `folder`. Reads its Info.json once; a missing or damaged
    /// file counts as empty.
    explicit Bundle(const QString &folder);

    /// The text under `key` in Info.json, for example "CFBundleShortVersionString"; absent when the key is
    /// missing or its value is not a text.
    [[nodiscard]] std::optional<QString> infoText(const QString &key) const;

    /// The public version, from "CFBundleShortVersionString"; "?" when absent.
    [[nodiscard]] QString shortVersion() const;

    /// The folder of the sounds.
    [[nodiscard]] QString soundsFolder() const;

private:
    QString m_folder;
    QJsonObject m_information;
};
