// SPDX-License-Identifier: GPL-3.0-or-later
#include "Appcast.h"

#include "SmallTags.h"

#include <QHash>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype sizeLimit = 1'048'576;
constexpr int depthLimit = 32;
constexpr int itemLimit = 1'000;
constexpr qsizetype enclosureLimit = 32;
constexpr qint64 archiveLimit = 1'073'741'824;
constexpr qsizetype notesLimit = 20'000;
constexpr qsizetype lineLimit = 200;
constexpr auto extensionNamespace = "http://www.andymatuschak.org/xml-namespaces/sparkle"_L1;
constexpr auto ownNamespace = "urn:orvanebreak:feed"_L1;

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

    [[nodiscard]] UpdateVersion version(const QXmlStreamAttributes &enclosure) const
    {
        return UpdateVersion(property(enclosure, u"version"_s));
    }

    [[nodiscard]] QString notes(AddressRule isAllowed) const;
    void setConditions(AppcastItem &item, const QXmlStreamAttributes &enclosure) const;
    [[nodiscard]] std::optional<AppcastItem> item(const QXmlStreamAttributes &enclosure,
                                                  AddressRule isAllowed) const;
};

QString Draft::notes(AddressRule isAllowed) const
{
    const QString text = truncated(plain.value(u"description"_s), notesLimit);
    const QUrl link(extended.value(u"releaseNotesLink"_s).trimmed(), QUrl::StrictMode);
    // What the link leads to is not signed, so it is not shown here.
    return text.isEmpty() && isAllowed(link) ? truncated(link.toString(), lineLimit) : text;
}

void Draft::setConditions(AppcastItem &item, const QXmlStreamAttributes &enclosure) const
{
    const QString minimum = property(enclosure, u"minimumSystemVersion"_s);
    const QString maximum = property(enclosure, u"maximumSystemVersion"_s);
    const QString interval = property(enclosure, u"phasedRolloutInterval"_s);
    bool isNumber = true;
    const int seconds = interval.isEmpty() ? 0 : interval.toInt(&isNumber);
    item.minimumSystemVersion = UpdateVersion(minimum);
    item.maximumSystemVersion = UpdateVersion(maximum);
    item.rolloutInterval = std::chrono::seconds(seconds);
    item.isCritical = extended.contains(u"criticalUpdate"_s);
    static const std::array others{u"channel"_s, u"hardwareRequirements"_s, u"minimumAutoupdateVersion"_s,
                                   u"minimumUpdateVersion"_s};
    item.isRestricted = (!minimum.isEmpty() && !item.minimumSystemVersion.isValid()) ||
                        (!maximum.isEmpty() && !item.maximumSystemVersion.isValid()) || !isNumber ||
                        seconds < 0 ||
                        std::any_of(
                            others.begin(), others.end(),
                            [&](const QString &name) { return !property(enclosure, name).isEmpty(); });
}

std::optional<AppcastItem> Draft::item(const QXmlStreamAttributes &enclosure, AddressRule isAllowed) const
{
    AppcastItem result;
    result.version = version(enclosure);
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
    setConditions(result, enclosure);
    result.date = parsedDate(plain.value(u"pubDate"_s));
    result.releaseNotes = notes(isAllowed);
    return result;
}

class FeedReader
{
public:
    FeedReader(const QByteArray &bytes, AddressRule isAllowed, const ReadingLimits &limits)
        : m_xml(QString::fromUtf8(bytes))
        , m_isAllowed(isAllowed)
        , m_stop(limits.stop)
        , m_deadline(std::chrono::steady_clock::now() + limits.time)
    {
    }

    std::optional<Appcast> read();

private:
    [[nodiscard]] bool isPlain(QLatin1StringView name) const
    {
        return m_xml.namespaceUri().isEmpty() && m_xml.name() == name;
    }

    [[nodiscard]] bool isInTime() const
    {
        return !m_stop.stop_requested() && std::chrono::steady_clock::now() < m_deadline;
    }

    [[nodiscard]] bool readToken();
    [[nodiscard]] bool startElement();
    void endElement();
    void endChannelField();
    void endItemField();
    void endItem();

    QXmlStreamReader m_xml;
    AddressRule m_isAllowed;
    std::stop_token m_stop;
    std::chrono::steady_clock::time_point m_deadline;
    Appcast m_feed;
    std::optional<Draft> m_item;
    QString m_text;
    int m_depth = 0;
    int m_itemCount = 0;
    bool m_isInChannel = false;
};

std::optional<Appcast> FeedReader::read()
{
    while (!m_xml.atEnd()) {
        if (!isInTime() || !readToken())
            return std::nullopt;
    }
    if (m_xml.hasError())
        return std::nullopt;
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
    if (m_depth == itemFieldDepth && m_item && isPlain("enclosure"_L1)) {
        m_item->enclosures.append(m_xml.attributes());
        if (m_item->enclosures.size() > enclosureLimit)
            return false;
    }
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
    else if (m_depth == itemDepth && m_isInChannel && m_xml.namespaceUri() == ownNamespace)
        endChannelField();
}

void FeedReader::endChannelField()
{
    if (m_xml.name() == "serial"_L1)
        m_feed.serial = std::max(0LL, m_text.trimmed().toLongLong());
    else if (m_xml.name() == "expires"_L1)
        m_feed.expires = parsedDate(m_text);
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
        const UpdateVersion version =
            m_item->property(enclosure, u"os"_s) == "linux"_L1 ? m_item->version(enclosure) : UpdateVersion();
        if (auto item = m_item->item(enclosure, m_isAllowed))
            m_feed.items.push_back(std::move(*item));
        else if (version.isValid() && !(version <= m_feed.newestUnusable))
            m_feed.newestUnusable = version;
    }
    m_item.reset();
}

} // namespace

std::optional<Appcast> parseAppcast(const QByteArray &bytes, AddressRule isAllowed,
                                    const ReadingLimits &limits)
{
    if (bytes.size() > sizeLimit || !QUtf8StringView(bytes).isValidUtf8() || !hasSmallTags(bytes))
        return std::nullopt;
    return FeedReader(bytes, isAllowed, limits).read();
}
