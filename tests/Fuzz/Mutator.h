// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QList>

#include <random>
#include <utility>

/// The seed that ORVANE_TEST_SEED names, or else any; told in the test's output.
inline unsigned chosenSeed()
{
    const QByteArray chosen = qgetenv("ORVANE_TEST_SEED");
    const unsigned value = chosen.isEmpty() ? std::random_device()() : chosen.toUInt();
    qInfo("seed %u; ORVANE_TEST_SEED repeats it", value);
    return value;
}

/// Makes many inputs out of a few: bytes change, go, come, and move from one input to the other. The same
/// seed makes the same inputs. Words that mean something to the reader come in, too.
class Mutator
{
public:
    Mutator(const QString &folder, unsigned seed, QList<QByteArray> words = jsonWords())
        : m_random(seed)
        , m_words(std::move(words))
    {
        for (const QFileInfo &entry : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
            QFile file(entry.filePath());
            if (file.open(QIODevice::ReadOnly))
                m_corpus.append(file.readAll());
        }
    }

    [[nodiscard]] const QList<QByteArray> &corpus() const { return m_corpus; }

    QByteArray next()
    {
        QByteArray input = m_corpus.at(below(m_corpus.size()));
        for (qsizetype changes = 1 + below(8); changes > 0; --changes)
            change(input);
        return input;
    }

private:
    static QList<QByteArray> jsonWords()
    {
        return {"\\u0000", "\\ud800",   "\\udc00", "1e3", "-0",       "1.0",          "null",
                "true",    "[[[[",      "}}}}",    "\"",  "\xff\xfe", "\xed\xa0\x80", "9223372036854775808",
                "|",       "{\"id\":1,"};
    }

    qsizetype below(qsizetype limit)
    {
        return std::uniform_int_distribution<qsizetype>(0, std::max<qsizetype>(limit, 1) - 1)(m_random);
    }

    void change(QByteArray &input)
    {
        const qsizetype place = below(input.size() + 1);
        switch (below(6)) {
        case 0:
            if (!input.isEmpty())
                input[below(input.size())] = static_cast<char>(below(256));
            break;
        case 1:
            input.remove(place, 1 + below(16));
            break;
        case 2:
            input.insert(place, m_words.at(below(m_words.size())));
            break;
        case 3:
            input.insert(place, input.mid(below(input.size()), below(64)));
            break;
        case 4:
            input.truncate(place);
            break;
        default:
            input.insert(place, m_corpus.at(below(m_corpus.size())).mid(below(64), below(64)));
        }
    }

    std::mt19937 m_random;
    QList<QByteArray> m_words;
    QList<QByteArray> m_corpus;
};
