// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"
#include "Support/ScratchFolder.h"
#include "Support/TestProgram.h"
#include "Support/TestSeed.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <chrono>
#include <csignal>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr int kills = 300;
constexpr quint32 maxDelayMicroseconds = 15'000;
constexpr qint64 maxFillerSize = 60'000;
const QString recordKey = u"record"_s;

/// The record of a generation. All its members follow from the number.
QJsonObject record(qint64 generation)
{
    const qsizetype size = generation * 7919 % maxFillerSize;
    return {{u"generation"_s, generation},
            {u"filler"_s, QString(size, QChar(u'a' + static_cast<char16_t>(generation % 26)))},
            {u"opposite"_s, -generation}};
}

/// The generation of the record in `json`; absent unless the record is whole.
std::optional<qint64> generationIn(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    const QJsonObject stored = document.object().value(recordKey).toObject();
    const qint64 generation = stored.value(u"generation"_s).toInteger(-1);
    if (generation < 0 || stored != record(generation))
        return std::nullopt;
    return generation;
}

[[noreturn]] void writeForEver(const std::filesystem::path &file, int report)
{
    JsonPreferences preferences(file);
    qint64 generation = preferences.value(recordKey).toObject().value(u"generation"_s).toInteger(0);
    char byte = 0;
    for (;;) {
        preferences.setValue(recordKey, record(++generation));
        if (report >= 0 && write(report, &byte, 1) == 1)
            report = -1;
    }
}

/// Starts a writer, kills it `delay` after its first change, and waits for its end.
void killOneWriter(const std::filesystem::path &file, std::chrono::microseconds delay)
{
    int ends[2] = {-1, -1};
    QCOMPARE(pipe(ends), 0);
    const pid_t writer = fork();
    if (writer == 0)
        writeForEver(file, ends[1]);
    close(ends[1]);
    char byte = 0;
    const ssize_t reported = read(ends[0], &byte, 1);
    close(ends[0]);
    std::this_thread::sleep_for(delay);
    kill(writer, SIGKILL);
    int status = 0;
    waitpid(writer, &status, 0);
    QCOMPARE(reported, 1);
    QVERIFY(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
}

/// Counts up to `last` under `key`; returns 0 when no step was lost.
int countUp(const std::filesystem::path &file, const QString &key, int last)
{
    JsonPreferences preferences(file);
    for (int value = 1; value <= last; ++value) {
        preferences.setValue(key, value);
        if (JsonPreferences(file).integer(key) != value)
            return 1;
    }
    return 0;
}

} // namespace

/// Several processes write, and some are killed while writing.
class PreferencesTortureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killedWritersLeaveAWholeFile();
    void twoProcessesLoseNoChange();
};

void PreferencesTortureTest::killedWritersLeaveAWholeFile()
{
    const ScratchFolder folder;
    QRandomGenerator random(testSeed());
    qint64 lastGeneration = 0;
    int killedWhileWriting = 0;
    for (int number = 0; number < kills; ++number) {
        killOneWriter(folder.file(), std::chrono::microseconds(random.bounded(maxDelayMicroseconds)));
        if (QTest::currentTestFailed())
            return;
        const std::optional<qint64> generation = generationIn(folder.bytes());
        QVERIFY2(generation, folder.bytes().left(200).constData());
        QVERIFY(*generation > lastGeneration);
        lastGeneration = *generation;
        const qsizetype leftOver = folder.names().size() - 1;
        QVERIFY(leftOver <= 1);
        killedWhileWriting += leftOver == 1 ? 1 : 0;
    }
    qInfo("%lld changes, %d of %d writers killed with a temporary file",
          static_cast<long long>(lastGeneration), killedWhileWriting, kills);
    QVERIFY(killedWhileWriting > 0);
    JsonPreferences(folder.file()).setValue(u"key"_s, 1);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
}

void PreferencesTortureTest::twoProcessesLoseNoChange()
{
    constexpr int changes = 200;
    const ScratchFolder folder;
    const pid_t other = fork();
    if (other == 0)
        _exit(countUp(folder.file(), u"other"_s, changes));
    const int own = countUp(folder.file(), u"own"_s, changes);
    int status = 0;
    waitpid(other, &status, 0);
    QCOMPARE(own, 0);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 0);
    const JsonPreferences preferences(folder.file());
    QCOMPARE(preferences.integer(u"own"_s), changes);
    QCOMPARE(preferences.integer(u"other"_s), changes);
}

ORVANE_TEST(PreferencesTortureTest, QCoreApplication)
#include "PreferencesTortureTest.moc"
