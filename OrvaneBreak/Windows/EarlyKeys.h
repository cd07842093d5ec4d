// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QObject>
#include <QSet>

class QKeyEvent;

/// Keeps what somebody is typing from answering a dialog that comes up by itself: ignores the keys of the
/// first second in which the dialog has the keyboard, and then all keys until every one of those is up.
/// Belongs to the dialog.
class EarlyKeys final : public QObject
{
    Q_OBJECT

public:
    explicit EarlyKeys(QDialog &dialog);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] bool isEarly(const QKeyEvent &key);

    QDialog &m_dialog;
    QElapsedTimer m_sinceActivation;
    QSet<int> m_down;
};
