// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <random>
#include <utility>

/// Makes inputs out of those of a corpus: changes, removes and inserts bytes, and copies parts of other
/// inputs and words of a dictionary. The same seed gives the same inputs.
class Mutator
{
public:
    Mutator(QList<QByteArray> corpus, QList<QByteArray> words, unsigned seed)
        : m_random(seed)
        , m_words(std::move(words))
        , m_corpus(std::move(corpus))
    {
    }

    /// A random input of the corpus.
    [[nodiscard]] QByteArray any() { return oneOf(m_corpus); }

    /// `input` with one to eight changes.
    [[nodiscard]] QByteArray changed(QByteArray input)
    {
        for (qsizetype changes = 1 + below(8); changes > 0; --changes)
            change(input);
        return input;
    }

    [[nodiscard]] unsigned number() { return static_cast<unsigned>(m_random()); }

private:
    qsizetype below(qsizetype limit)
    {
        return std::uniform_int_distribution<qsizetype>(0, std::max<qsizetype>(limit, 1) - 1)(m_random);
    }

    QByteArray oneOf(const QList<QByteArray> &choices) { return choices.value(below(choices.size())); }

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
            input.insert(place, oneOf(m_words));
            break;
        case 3:
            input.insert(place, input.mid(below(input.size()), below(64)));
            break;
        case 4:
            input.truncate(place);
            break;
        default:
            input.insert(place, any().mid(below(64), below(64)));
        }
    }

    std::mt19937 m_random;
    QList<QByteArray> m_words;
    QList<QByteArray> m_corpus;
};
