// SPDX-License-Identifier: GPL-3.0-or-later
#include "Fuzz/Mutator.h"
#include "Platform/Network/Http.h"
#include "Platform/Preferences/ScratchFolder.h"
#include "Updates/Appcast.h"
#include "Updates/ArchiveMaker.h"
#include "Updates/UnpackedUpdate.h"

#include <QTest>

#include <array>
#include <random>

using namespace Qt::StringLiterals;

namespace {

constexpr int feeds = 20'000;
constexpr int archives = 800;
constexpr qsizetype blockSize = 512;

QString corpus(const QString &name)
{
    return QStringLiteral(ORVANE_CORPUS) + u'/' + name;
}

QList<QByteArray> feedWords()
{
    return {"<item>",  "</item>",    "<s:version>", "<!DOCTYPE a [<!ENTITY x 'y'>]>",
            "&x;",     "&#0;",       "<![CDATA[",   "]]>",
            "<!--",    "xmlns:s=''", "\xff\xfe",    "<x><x><x><x>",
            "http://", "-1",         "1e9",         "<enclosure "};
}

void checkFeed(const QByteArray &input)
{
    const auto verdict = parseAppcast(input, &Http::isAllowed);
    const auto *feed = std::get_if<Appcast>(&verdict);
    if (!feed)
        return;
    for (const AppcastItem &item : feed->items) {
        QVERIFY(item.version.isValid() && Http::isAllowed(item.archive));
        QVERIFY(item.length > 0 && item.length <= 1'073'741'824);
        QCOMPARE(item.signature.size(), 64);
        QVERIFY(item.title.size() <= 200 && item.displayVersion.size() <= 200);
        QVERIFY(item.releaseNotes.size() <= 20'000);
        QVERIFY(item.releaseNotesAddress.isEmpty() || Http::isAllowed(item.releaseNotesAddress));
    }
}

bool isHeader(const QByteArray &tar, qsizetype block)
{
    constexpr qsizetype magicField = 257;
    return tar.sliced(block, blockSize).sliced(magicField).startsWith("ustar");
}

/// The archive with the sum of every header right again: otherwise no reader would look at the rest of it.
QByteArray withRightSums(QByteArray tar)
{
    constexpr qsizetype field = 148;
    constexpr qsizetype length = 8;
    for (qsizetype block = 0; block + blockSize <= tar.size(); block += blockSize) {
        if (!isHeader(tar, block))
            continue;
        tar.replace(block + field, length, QByteArray(length, ' '));
        unsigned sum = 0;
        for (const char byte : QByteArrayView(tar).sliced(block, blockSize))
            sum += static_cast<unsigned char>(byte);
        tar.replace(block + field, length - 1, QByteArray::number(sum, 8).rightJustified(6, '0') + '\0');
    }
    return tar;
}

/// Changes a few bytes in headers, to such as mean something there.
QByteArray withChangedHeaders(QByteArray tar, std::mt19937 &random)
{
    constexpr QByteArrayView meaningful("01234567/.\0xgLK \xff", 17);
    constexpr unsigned changesLimit = 4;
    QList<qsizetype> headers;
    for (qsizetype block = 0; block + blockSize <= tar.size(); block += blockSize) {
        if (isHeader(tar, block))
            headers.append(block);
    }
    const auto below = [&](qsizetype limit) {
        return static_cast<qsizetype>(random() % static_cast<unsigned>(limit));
    };
    for (unsigned change = random() % changesLimit; change < changesLimit; ++change) {
        // Half of them in the kind, the rest in the names, the mode and the size.
        constexpr std::array<qsizetype, 2> nameFields{0, 157};
        constexpr qsizetype kindField = 156;
        const qsizetype place = below(2) == 0 ? kindField : nameFields.at(random() % 2) + below(24);
        tar[headers.at(below(headers.size())) + place] = meaningful.at(below(meaningful.size()));
    }
    return tar;
}

/// Unpacks `tar` and looks at what has come of it; returns whether it was accepted.
bool isUnpackedSafely(const QByteArray &tar, const ScratchFolder &scratch)
{
    UnpackLimits limits;
    limits.entries = 100;
    limits.totalBytes = 1'000'000;
    const std::filesystem::path folder = scratch.path("unpacked");
    const auto result = unpackArchive(ArchiveMaker::compressed(tar), folder, limits);
    const bool isAccepted = std::holds_alternative<UnpackedUpdate>(result);
    bool isSafe = scratch.names() == (isAccepted ? QStringList{u"unpacked"_s} : QStringList());
    if (isAccepted) {
        const std::filesystem::path top = std::get<UnpackedUpdate>(result).folder;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
            std::error_code error;
            const auto target = std::filesystem::weakly_canonical(entry.path(), error);
            const bool isInside = error || target.string().starts_with(top.string());
            const bool isUsual = entry.is_symlink() || entry.is_directory() || entry.is_regular_file();
            const auto mode = entry.symlink_status().permissions();
            const bool isModeUsual = entry.is_symlink() || mode == std::filesystem::perms(0755) ||
                                     mode == std::filesystem::perms(0644);
            isSafe = isSafe && isInside && isUsual && isModeUsual;
        }
        std::filesystem::remove_all(folder);
    }
    if (!isSafe)
        QTest::qFail(qPrintable(QString::fromLatin1(tar.toBase64())), __FILE__, __LINE__);
    return isAccepted;
}

} // namespace

/// Feeds and archives that nobody would make on purpose, made out of a few that somebody did.
class HostileUpdateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void corpusOfFeeds()
    {
        const Mutator mutator(corpus(u"appcast"_s), 0);
        QVERIFY(mutator.corpus().size() >= 7);
        std::size_t items = 0;
        for (const QByteArray &feed : mutator.corpus()) {
            checkFeed(feed);
            const auto verdict = parseAppcast(feed, &Http::isAllowed);
            items += std::holds_alternative<Appcast>(verdict) ? std::get<Appcast>(verdict).items.size() : 0;
        }
        QCOMPARE(items, 8U);
    }

    static void everyItemOfAnyFeedIsSound()
    {
        Mutator mutator(corpus(u"appcast"_s), chosenSeed(), feedWords());
        for (int count = 0; count < feeds && !QTest::currentTestFailed(); ++count)
            checkFeed(mutator.next());
    }

    static void corpusOfArchives()
    {
        const Mutator mutator(corpus(u"archive"_s), 0);
        QVERIFY(mutator.corpus().size() >= 5);
        const ScratchFolder scratch;
        qsizetype accepted = 0;
        for (const QByteArray &tar : mutator.corpus())
            accepted += isUnpackedSafely(tar, scratch) ? 1 : 0;
        QCOMPARE(accepted, 4);
    }

    static void noArchiveWritesOutsideOfItsFolder()
    {
        const unsigned seed = chosenSeed();
        Mutator mutator(corpus(u"archive"_s), seed, {"../", "/", "ustar", QByteArray(blockSize, '\0')});
        std::mt19937 random(seed);
        const ScratchFolder scratch;
        int accepted = 0;
        for (int count = 0; count < archives && !QTest::currentTestFailed(); ++count) {
            const QByteArray tar =
                count % 2 == 0
                    ? mutator.next()
                    : withChangedHeaders(mutator.corpus().at(count % mutator.corpus().size()), random);
            accepted += isUnpackedSafely(withRightSums(tar), scratch) ? 1 : 0;
        }
        qInfo("%d of %d were unpacked", accepted, archives);
        QVERIFY(accepted > 0 && accepted < archives);
    }
};

QTEST_APPLESS_MAIN(HostileUpdateTest)
#include "HostileUpdateTest.moc"
