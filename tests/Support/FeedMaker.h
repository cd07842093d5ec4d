// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Http.h"
#include "SignedFeed.h"

#include <QByteArray>
#include <QTest>

/// Builds feeds, complete ones or with parts that a test changes.
namespace FeedMaker {

inline QByteArray feed(const QByteArray &content, const QByteArray &before = QByteArray())
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>)" + before +
           R"(<rss version="2.0" xmlns:s="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>)" +
           content + "</channel></rss>";
}

inline QByteArray signature(qsizetype size = 64)
{
    return QByteArray(size, 's').toBase64();
}

/// A complete enclosure, with the attributes in `more` at the end.
inline QByteArray enclosure(const QByteArray &more = QByteArray())
{
    return R"(<enclosure url="https://example.org/OrvaneBreak-1.3-linux-x86_64.tar.zst" length="1000" )"
           R"(type="application/zstd" s:os="linux" s:edSignature=")" +
           signature() + "\" " + more + "/>";
}

inline QByteArray item(const QByteArray &content)
{
    return "<item>" + content + "</item>";
}

/// A complete item.
inline QByteArray wholeItem(const QByteArray &version = "1.3")
{
    return item("<s:version>" + version + "</s:version>" + enclosure());
}

inline Appcast parsed(const QByteArray &bytes)
{
    return parseAppcast(bytes, &Http::isAllowed).value_or(Appcast());
}

/// Reads a feed without its signature, as FeedThread::read() but at once. Without a serial number it gets 1,
/// and it does not expire without a date.
inline void readUnsigned(const QByteArray &bytes, const Ed25519::PublicKey & /*key*/, QObject & /*context*/,
                         const FeedThread::Completion &completion)
{
    std::optional<Appcast> feed = parseAppcast(bytes, &Http::isAllowed);
    if (feed && feed->serial == 0)
        feed->serial = 1;
    if (feed && !feed->expires.isValid())
        feed->expires = QDateTime::fromSecsSinceEpoch(32'503'680'000, Qt::UTC);
    completion(feed ? FeedResult(*feed) : FeedProblem::Unreadable);
}

} // namespace FeedMaker
