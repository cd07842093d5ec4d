// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QString>
#include <QStringList>

/// The tables of a privacy statement.
struct PrivacyStatement
{
    using Names = QSet<QString>;

    struct Members
    {
        Names always;
        Names sometimes;

        bool operator==(const Members &) const = default;
    };

    QMap<QString, Members> requests; ///< By method and path, as in "GET /appcast.xml".
    Names members;                   ///< Members that are explained.
    Names headers;

    /// Reads the three tables of the statement in the file `path`. Names are those in code markup; in the
    /// third column of the requests, members that are not always sent follow a semicolon.
    [[nodiscard]] static PrivacyStatement read(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("there is no %s", qPrintable(path));
        PrivacyStatement statement;
        int table = 0;
        while (!file.atEnd()) {
            const QString line = QString::fromUtf8(file.readLine());
            if (line.startsWith(QStringLiteral("|---")))
                ++table;
            else if (line.startsWith(QStringLiteral("| `")))
                statement.add(table, line.split(u'|'));
        }
        return statement;
    }

private:
    void add(int table, const QStringList &cells)
    {
        const QString name = codes(cells.at(1)).values().constFirst();
        if (table == 1)
            requests.insert(name,
                            {codes(cells.at(3).section(u';', 0, 0)), codes(cells.at(3).section(u';', 1))});
        else
            (table == 2 ? members : headers).insert(name);
    }

    static Names codes(const QString &cell)
    {
        static const QRegularExpression code(QStringLiteral("`([^`]+)`"));
        Names result;
        for (auto match = code.globalMatch(cell); match.hasNext();)
            result.insert(match.next().captured(1));
        return result;
    }
};
