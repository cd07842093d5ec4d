// SPDX-License-Identifier: GPL-3.0-or-later
#include "Makers.h"

#include "Support/FeedMaker.h"

#include <array>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr qsizetype hugeSize = 100'000;

int pick(std::mt19937 &random, int count)
{
    return std::uniform_int_distribution<int>(0, count - 1)(random);
}

QString newText(qint64 id, std::mt19937 &random)
{
    const std::array<QString, 4> texts{u"Bonjour"_s, u"<b>Merci</b> &amp; à bientôt 👁"_s,
                                       u"Une ligne\nune autre"_s, u"Long. "_s.repeated(300)};
    return texts.at(static_cast<std::size_t>(pick(random, 4))).trimmed() + u" %1"_s.arg(id);
}

} // namespace

QJsonObject Makers::rightAnswer(const QString &nonce, const Signer &signer, Date date, std::mt19937 &random)
{
    if (!m_message && pick(random, 15) == 0) {
        ++m_lastId;
        m_message = ServerMessage{m_lastId, newText(m_lastId, random)};
    }
    return m_message ? signer.answer(nonce, unixSeconds(date), m_message->id, m_message->text)
                     : signer.answer(nonce, unixSeconds(date), 0, QString());
}

Makers::Answer Makers::answerCheckIn(const FakeHttp::Request &request, const Signer &signer, Date now,
                                     Date theirs, std::mt19937 &random)
{
    const QJsonObject question = request.json();
    if (m_message && question.value(u"m"_s).toInteger() == m_message->id) {
        ++m_delivered;
        m_message.reset();
    }
    const QJsonObject right = rightAnswer(question.value(u"n"_s).toString(), signer, now, random);
    const QByteArray whole = jsonBytes(right);
    QJsonObject changed = right;
    switch (pick(random, 20)) {
    case 0:
        return {u"none"_s, std::nullopt, std::nullopt};
    case 1:
        return {u"error"_s, HttpAnswer{500, "<html>"}, std::nullopt};
    case 2:
        return {u"truncated"_s, HttpAnswer{200, whole.left(pick(random, static_cast<int>(whole.size())))},
                std::nullopt};
    case 3:
        // A huge answer takes long to parse.
        if (pick(random, 10) > 0)
            return {u"empty"_s, HttpAnswer{200, {}}, std::nullopt};
        return {u"huge"_s, HttpAnswer{200, QByteArray(hugeSize, '[')}, std::nullopt};
    case 4:
        changed.insert(u"mid"_s, right.value(u"mid"_s).toInteger() + 1);
        return {u"forged"_s, HttpAnswer{200, jsonBytes(changed)}, std::nullopt};
    case 5:
        return {u"replayed"_s, HttpAnswer{200, m_earlierAnswer}, std::nullopt};
    default:
        break;
    }
    m_earlierAnswer = whole;
    const bool isFresh = std::chrono::abs(theirs - std::chrono::floor<std::chrono::seconds>(now)) < 600s;
    return {u"right"_s, HttpAnswer{pick(random, 9) ? 200 : 503, whole}, isFresh ? m_message : std::nullopt};
}

Makers::Answer Makers::answerReport(std::mt19937 &random, bool &isAccepted)
{
    isAccepted = pick(random, 3) > 0;
    if (isAccepted)
        return {u"accepted"_s, HttpAnswer{200, R"({"ok":true})"}, std::nullopt};
    if (pick(random, 2))
        return {u"none"_s, std::nullopt, std::nullopt};
    return {u"refused"_s, HttpAnswer{500, R"({"ok":)"}, std::nullopt};
}

Makers::Answer Makers::answerFeed(std::mt19937 &random)
{
    switch (pick(random, 4)) {
    case 0:
        return {u"none"_s, std::nullopt, std::nullopt};
    case 1:
        return {u"no feed"_s, HttpAnswer{200, "<rss><channel>"}, std::nullopt};
    default:
        return {u"nothing newer"_s, HttpAnswer{200, FeedMaker::feed(FeedMaker::wholeItem("1.0"))},
                std::nullopt};
    }
}
