// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

/// What is installed with the executable: share/OrvaneBreak beside its bin folder, in the build tree as well.
class Bundle
{
public:
    /// The bundle of the running program; needs the application object.
    [[nodiscard]] static Bundle main();

    /// The bundle whose share/OrvaneBreak folder is `folder`. Reads Info.json in it once; a missing or
    /// damaged file is an empty dictionary.
    explicit Bundle(const QString &folder);

    /// A text of the information dictionary, for example "CFBundleShortVersionString"; absent when the key is
    /// missing or holds something else.
    [[nodiscard]] std::optional<QString> infoText(const QString &key) const;

    /// The version that the makers call this build by, kept under "CFBundleShortVersionString"; "?" without
    /// one.
    [[nodiscard]] QString shortVersion() const;

    /// The folder of the sounds.
    [[nodiscard]] QString soundsFolder() const;

private:
    QString m_folder;
    QJsonObject m_information;
};
