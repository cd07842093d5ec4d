// SPDX-License-Identifier: GPL-3.0-or-later
#include "Appcast.h"

#include "Ed25519.h"

#include <QHash>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype sizeLimit = 1'048'576;
constexpr int depthLimit = 32;
constexpr int itemLimit = 1'000;
constexpr qint64 archiveLimit = 1'073'741'824;
constexpr qsizetype notesLimit = 20'000;
constexpr qsizetype lineLimit = 200;
constexpr auto extensionNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle"_L1;

// Levels in <rss><channel><item>, counted from 1, and of the elements in an item.
constexpr int channelDepth = 2;
constexpr int itemDepth = 3;
constexpr int itemFieldDepth = 4;

QString truncated(QString text, qsizetype limit)
{
    text = text.trimmed();
    if (text.size() > limit)
        text.truncate(text.at(limit - 1).isHighSurrogate() ? limit - 1 : limit);
    return text;
}

QDateTime parsedDate(const QString &text)
{
    static const QRegularExpression namedZone(u" (GMT|UTC?|Z)$"_s);
    return QDateTime::fromString(text.trimmed().replace(namedZone, u" +0000"_s), Qt::RFC2822Date);
}

std::optional<qint64> parsedLength(const QString &text)
{
    bool isNumber = false;
    const qint64 length = text.toLongLong(&isNumber);
    return isNumber && length > 0 && length <= archiveLimit ? std::optional(length) : std::nullopt;
}

std::optional<QByteArray> parsedSignature(const QString &text)
{
    auto bytes =
        QByteArray::fromBase64Encoding(text.trimmed().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!bytes || (*bytes).size() != Ed25519::signatureSize)
        return std::nullopt;
    return *bytes;
}

QString architectureInName(const QUrl &archive)
{
    static const QRegularExpression pattern(u"-linux-([0-9A-Za-z_]+)\\.tar\\.zst\\z"_s);
    return pattern.match(archive.fileName()).captured(1);
}

/// An item while it is read.
struct Draft
{
    QHash<QString, QString> plain;    ///< Texts of the elements of RSS.
    QHash<QString, QString> extended; ///< Texts of the elements of the extension.
    QList<QXmlStreamAttributes> enclosures;

    [[nodiscard]] QString property(const QXmlStreamAttributes &enclosure, const QString &name) const
    {
        return (enclosure.hasAttribute(extensionNamespace, name)
                    ? enclosure.value(extensionNamespace, name).toString()
                    : extended.value(name))
            .trimmed();
    }

    [[nodiscard]] std::optional<AppcastItem> item(const QXmlStreamAttributes &enclosure,
                                                  AddressRule isAllowed) const;
};

std::optional<AppcastItem> Draft::item(const QXmlStreamAttributes &enclosure, AddressRule isAllowed) const
{
    AppcastItem result;
    result.version = UpdateVersion(property(enclosure, u"version"_s));
    result.archive = QUrl(enclosure.value("url"_L1).trimmed().toString(), QUrl::StrictMode);
    const auto length = parsedLength(enclosure.value("length"_L1).toString());
    const auto signature = parsedSignature(property(enclosure, u"edSignature"_s));
    if (!result.version.isValid() || !isAllowed(result.archive) || !length || !signature)
        return std::nullopt;
    result.length = *length;
    result.signature = *signature;

    result.displayVersion = truncated(property(enclosure, u"shortVersionString"_s), lineLimit);
    if (result.displayVersion.isEmpty())
        result.displayVersion = result.version.text();
    result.operatingSystem = property(enclosure, u"os"_s);
    result.architecture = property(enclosure, u"arch"_s);
    if (result.architecture.isEmpty())
        result.architecture = architectureInName(result.archive);
    const QString minimum = property(enclosure, u"minimumSystemVersion"_s);
    result.minimumSystemVersion = UpdateVersion(minimum);
    result.needsUnknownSystem = !minimum.isEmpty() && !result.minimumSystemVersion.isValid();
    result.isCritical = extended.contains(u"criticalUpdate"_s);

    result.date = parsedDate(plain.value(u"pubDate"_s));
    result.releaseNotes = truncated(plain.value(u"description"_s), notesLimit);
    return result;
}

class FeedReader
{
public:
    FeedReader(const QByteArray &bytes, AddressRule isAllowed)
        : m_xml(bytes)
        , m_isAllowed(isAllowed)
    {
    }

    std::optional<Appcast> read();

private:
    [[nodiscard]] bool isPlain(QLatin1StringView name) const
    {
        return m_xml.namespaceUri().isEmpty() && m_xml.name() == name;
    }

    [[nodiscard]] bool readToken();
    [[nodiscard]] bool startElement();
    void endElement();
    void endItemField();
    void endItem();

    QXmlStreamReader m_xml;
    AddressRule m_isAllowed;
    Appcast m_feed;
    QHash<QString, QString> m_channel;
    std::optional<Draft> m_item;
    QString m_text;
    int m_depth = 0;
    int m_itemCount = 0;
    bool m_isInChannel = false;
};

std::optional<Appcast> FeedReader::read()
{
    while (!m_xml.atEnd()) {
        if (!readToken())
            return std::nullopt;
    }
    if (m_xml.hasError())
        return std::nullopt;
    m_feed.date = parsedDate(m_channel.value(u"lastBuildDate"_s));
    if (!m_feed.date.isValid())
        m_feed.date = parsedDate(m_channel.value(u"pubDate"_s));
    return std::move(m_feed);
}

bool FeedReader::readToken()
{
    switch (m_xml.readNext()) {
    case QXmlStreamReader::DTD:
    case QXmlStreamReader::EntityReference:
        return false;
    case QXmlStreamReader::StartElement:
        ++m_depth;
        return startElement();
    case QXmlStreamReader::Characters:
        if (m_depth == itemDepth || m_depth == itemFieldDepth)
            m_text += m_xml.text();
        break;
    case QXmlStreamReader::EndElement:
        endElement();
        --m_depth;
        break;
    default:
        break;
    }
    return true;
}

bool FeedReader::startElement()
{
    if (m_depth > depthLimit || (m_depth == 1 && !isPlain("rss"_L1)))
        return false;
    if (m_depth == channelDepth)
        m_isInChannel = isPlain("channel"_L1);
    if (m_depth == itemDepth && m_isInChannel && isPlain("item"_L1)) {
        m_item.emplace();
        if (++m_itemCount > itemLimit)
            return false;
    }
    if (m_depth == itemFieldDepth && m_item && isPlain("enclosure"_L1))
        m_item->enclosures.append(m_xml.attributes());
    if (m_depth == itemDepth || m_depth == itemFieldDepth)
        m_text.clear();
    return true;
}

void FeedReader::endElement()
{
    if (m_depth == itemFieldDepth && m_item)
        endItemField();
    else if (m_depth == itemDepth && m_item)
        endItem();
    else if (m_depth == itemDepth && m_isInChannel && m_xml.namespaceUri().isEmpty())
        m_channel.insert(m_xml.name().toString(), m_text);
}

void FeedReader::endItemField()
{
    if (m_xml.namespaceUri().isEmpty())
        m_item->plain.insert(m_xml.name().toString(), m_text);
    else if (m_xml.namespaceUri() == extensionNamespace)
        m_item->extended.insert(m_xml.name().toString(), m_text);
}

void FeedReader::endItem()
{
    for (const QXmlStreamAttributes &enclosure : std::as_const(m_item->enclosures)) {
        if (auto item = m_item->item(enclosure, m_isAllowed))
            m_feed.items.push_back(std::move(*item));
    }
    m_item.reset();
}

} // namespace

std::optional<Appcast> parseAppcast(const QByteArray &bytes, AddressRule isAllowed)
{
    if (bytes.size() > sizeLimit)
        return std::nullopt;
    return FeedReader(bytes, isAllowed).read();
}
