// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// The folder that one makers' server keeps everything in: `signing-key`, `messages.json`,
/// `misbehaviour.json`, `acknowledgements.json` and `received.jsonl`. Commands write the messages and the
/// misbehaviour, the running server writes the rest, so the two never write the same file.
class StateFolder final
{
public:
    /// Makes the folder, readable by its owner alone, where it is not there yet. Throws std::runtime_error
    /// when that fails.
    explicit StateFolder(QString path);

    /// $XDG_STATE_HOME/orvanebreak-makers-server, or below ~/.local/state when that is no absolute path.
    [[nodiscard]] static QString standardPath();

    /// The path of the file `name` in the folder.
    [[nodiscard]] QString file(const QString &name) const;

private:
    QString m_path;
};
