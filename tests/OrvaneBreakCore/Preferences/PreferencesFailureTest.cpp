// SPDX-License-Identifier: GPL-3.0-or-later
#include "JsonPreferences.h"
#include "Support/ScratchFolder.h"
#include "Support/SystemCalls.h"
#include "Support/TestProgram.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/sysmacros.h>

#include <chrono>
#include <csignal>
#include <optional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString key = u"key"_s;
constexpr uid_t nobody = 65534;
const dev_t endlessZeros = makedev(1, 5);
using Create = int (*)(const char *path);

/// Drops the rights of the superuser, which override file modes, for its lifetime.
class OrdinaryUser
{
public:
    explicit OrdinaryUser(const ScratchFolder &folder)
        : m_old(geteuid())
    {
        isOrdinary =
            m_old != 0 || (chown(folder.path("").c_str(), nobody, nobody) == 0 && seteuid(nobody) == 0);
    }
    ~OrdinaryUser()
    {
        if (seteuid(m_old) != 0)
            qFatal("cannot restore the user");
    }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    bool isOrdinary;

private:
    uid_t m_old;
};

void limitFileSize(rlim_t bytes)
{
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

/// The file cannot be read or replaced.
class PreferencesFailureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u".*"_s)); }
    void anUnreadableFileIsNeverReplaced();
    void aReadOnlyFolderKeepsTheValuesInMemory();
    void specialFilesStay_data();
    void specialFilesStay();
    void aParentThatIsAFileKeepsTheValuesInMemory();
    void aFullDiskLeavesTheOldFile();
    void failingDisk_data();
    void failingDisk();
    void valuesAreWrittenOnceTheyCanBe_data();
    void valuesAreWrittenOnceTheyCanBe();
    void abandonedTemporaryFilesAreRemoved();
    void theWaitForALockedFolderIsShort();
};

void PreferencesFailureTest::anUnreadableFileIsNeverReplaced()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1})");
    const ino_t inode = ScratchFolder::status(folder.file()).st_ino;
    QCOMPARE(chmod(folder.file().c_str(), 0000), 0);
    {
        const OrdinaryUser user(folder);
        if (!user.isOrdinary)
            QSKIP("this process cannot give up its rights");
        JsonPreferences preferences(folder.file());
        QVERIFY(preferences.value(key).isUndefined());
        preferences.setValue(u"other"_s, 2);
        QCOMPARE(preferences.integer(u"other"_s), 2);
        QCOMPARE(ScratchFolder::status(folder.file()).st_ino, inode);
        QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
        QVERIFY(seteuid(0) == 0 || geteuid() != 0);
        QCOMPARE(chmod(folder.file().c_str(), 0644), 0);
        QVERIFY(geteuid() != 0 || seteuid(nobody) == 0);
        QCOMPARE(preferences.integer(key), 1);
        preferences.setValue(u"third"_s, 3);
    }
    const QJsonObject expected{{key, 1}, {u"other"_s, 2}, {u"third"_s, 3}};
    QCOMPARE(QJsonDocument::fromJson(folder.bytes()).object(), expected);
}

void PreferencesFailureTest::aReadOnlyFolderKeepsTheValuesInMemory()
{
    const ScratchFolder folder;
    folder.write("damage");
    QCOMPARE(chmod(folder.path("").c_str(), 0555), 0);
    const OrdinaryUser user(folder);
    if (!user.isOrdinary)
        QSKIP("this process cannot give up its rights");
    JsonPreferences preferences(folder.file());
    QVERIFY(preferences.value(key).isUndefined());
    preferences.setValue(key, 1);
    QCOMPARE(preferences.integer(key), 1);
    QCOMPARE(folder.bytes(), "damage"_ba);
    QCOMPARE(chmod(folder.path("").c_str(), 0755), 0);
    preferences.setValue(u"other"_s, 2);
    QCOMPARE(folder.bytes(), "{\n    \"key\": 1,\n    \"other\": 2\n}\n"_ba);
    QCOMPARE(folder.aside(folder.asideNames().value(0)), "damage"_ba);
}

void PreferencesFailureTest::specialFilesStay_data()
{
    QTest::addColumn<Create>("create");
    QTest::newRow("folder") << Create([](const char *path) { return mkdir(path, 0700); });
    QTest::newRow("fifo") << Create([](const char *path) { return mkfifo(path, 0600); });
    QTest::newRow("socket") << Create([](const char *path) { return mknod(path, S_IFSOCK | 0600, 0); });
    QTest::newRow("device") << Create(
        [](const char *path) { return mknod(path, S_IFCHR | 0600, endlessZeros); });
    QTest::newRow("link to itself") << Create(
        [](const char *path) { return symlink("preferences.json", path); });
}

void PreferencesFailureTest::specialFilesStay()
{
    QFETCH(const Create, create);
    // Created inside the folder, so that a failure of this test cannot damage a real device.
    const ScratchFolder folder;
    if (create(folder.file().c_str()) != 0)
        QSKIP("this process may not create such a file");
    const auto type = std::filesystem::symlink_status(folder.file()).type();
    JsonPreferences preferences(folder.file());
    QVERIFY(preferences.value(key).isUndefined());
    preferences.setValue(key, 1);
    QCOMPARE(preferences.integer(key), 1);
    QVERIFY(std::filesystem::symlink_status(folder.file()).type() == type);
    QCOMPARE(folder.names(), QStringList{u"preferences.json"_s});
    std::filesystem::remove(folder.file());
    preferences.setValue(u"other"_s, 2);
    QCOMPARE(folder.bytes(), "{\n    \"key\": 1,\n    \"other\": 2\n}\n"_ba);
}

void PreferencesFailureTest::aParentThatIsAFileKeepsTheValuesInMemory()
{
    const ScratchFolder folder;
    ScratchFolder::writeTo(folder.path("config"), "a file");
    const std::filesystem::path file = folder.path("config") / "OrvaneBreak" / "preferences.json";
    JsonPreferences preferences(file);
    preferences.setValue(key, 1);
    preferences.setValue(u"removed"_s, 1);
    preferences.setValue(u"removed"_s, QJsonValue::Undefined);
    QCOMPARE(preferences.integer(key), 1);
    QVERIFY(preferences.value(u"removed"_s).isUndefined());
    QCOMPARE(ScratchFolder::bytesOf(folder.path("config")), "a file"_ba);
    std::filesystem::remove(folder.path("config"));
    QCOMPARE(preferences.integer(key), 1);
    preferences.setValue(u"other"_s, 2);
    QCOMPARE(ScratchFolder::bytesOf(file), "{\n    \"key\": 1,\n    \"other\": 2\n}\n"_ba);
}

void PreferencesFailureTest::aFullDiskLeavesTheOldFile()
{
    const ScratchFolder folder;
    folder.write(R"({"key": 1})");
    const int status = runInChild([&folder] {
        std::signal(SIGXFSZ, SIG_IGN);
        JsonPreferences preferences(folder.file());
        limitFileSize(20);
        preferences.setValue(key, QString(100, u'x'));
        if (preferences.text(key) != QString(100, u'x') || folder.bytes() != R"({"key": 1})")
            return 1;
        if (folder.names() != QStringList{u"preferences.json"_s})
            return 2;
        limitFileSize(RLIM_INFINITY);
        preferences.setValue(u"other"_s, 2);
        return 0;
    });
    QCOMPARE(status, 0);
    const JsonPreferences preferences(folder.file());
    QCOMPARE(preferences.text(key), QString(100, u'x'));
    QCOMPARE(preferences.integer(u"other"_s), 2);
}

void PreferencesFailureTest::failingDisk_data()
{
    QTest::addColumn<int>("failures");
    QTest::addColumn<QByteArray>("before");
    for (const auto &[name, failures] : {std::pair("stays broken", SystemCalls::forEver),
                                         std::pair("for a moment", 1), std::pair("for two moments", 2)}) {
        QTest::newRow(name) << failures << R"({"kept": 1, "key": 1})"_ba;
        QTest::addRow("%s, with a damaged file", name) << failures << "{"_ba;
    }
}

void PreferencesFailureTest::failingDisk()
{
    QFETCH(const int, failures);
    QFETCH(const QByteArray, before);
    const bool isDamaged = before == "{";
    constexpr int wrong = 1;
    constexpr int withoutFailure = 2;
    int status = 0;
    for (int call = 1; status == 0; ++call) {
        QVERIFY(call < 200);
        const ScratchFolder folder;
        folder.write(before);
        status = runInChild([&] {
            SystemCalls::breakDiskBefore(call, failures);
            JsonPreferences preferences(folder.file());
            preferences.setValue(key, 2);
            if (preferences.integer(key) != 2)
                return wrong;
            return SystemCalls::count() < call ? withoutFailure : 0;
        });
        // A damaged file is still in place or was renamed; a good one was never renamed.
        const QStringList aside = folder.asideNames();
        const bool isUntouched = folder.bytes() == before;
        if (isDamaged)
            QVERIFY(isUntouched || (aside.size() == 1 && folder.aside(aside.constFirst()) == before));
        else
            QVERIFY(aside.isEmpty());
        JsonPreferences later(folder.file());
        later.setValue(u"other"_s, 3);
        QCOMPARE(later.integer(u"kept"_s), isDamaged ? std::nullopt : std::optional(1));
        const bool isStored = later.integer(key) == 2;
        QVERIFY(isStored || isUntouched || isDamaged);
        QVERIFY(isStored || status != withoutFailure);
        QCOMPARE(folder.names().size(), isDamaged ? 2 : 1);
    }
    QCOMPARE(status, withoutFailure);
}

void PreferencesFailureTest::valuesAreWrittenOnceTheyCanBe_data()
{
    QTest::addColumn<bool>("isAtTheEnd");
    QTest::newRow("while the program runs") << false;
    QTest::newRow("when the program ends") << true;
}

void PreferencesFailureTest::valuesAreWrittenOnceTheyCanBe()
{
    QFETCH(const bool, isAtTheEnd);
    const ScratchFolder folder;
    ScratchFolder::writeTo(folder.path("config"), "a file");
    const std::filesystem::path file = folder.path("config") / "preferences.json";
    std::optional<JsonPreferences> preferences(std::in_place, file, isAtTheEnd ? 1h : 20ms);
    preferences->setValue(key, 1);
    QTest::qWait(50);
    std::filesystem::remove(folder.path("config"));
    if (isAtTheEnd)
        preferences.reset();
    QTRY_COMPARE(ScratchFolder::bytesOf(file), "{\n    \"key\": 1\n}\n"_ba);
    const ino_t inode = ScratchFolder::status(file).st_ino;
    QTest::qWait(50);
    QCOMPARE(ScratchFolder::status(file).st_ino, inode);
}

void PreferencesFailureTest::abandonedTemporaryFilesAreRemoved()
{
    const ScratchFolder folder;
    const QStringList foreignFiles{u".preferences.json.0123456789abcdeF.tmp"_s,
                                   u".preferences.json.0123456789abcdef0.tmp"_s, u".preferences.json.tmp"_s,
                                   u".preferences.json.swp"_s, u"preferences.json~"_s};
    for (const QString &name : foreignFiles)
        ScratchFolder::writeTo(folder.path(name.toStdString()), "mine");
    ScratchFolder::writeTo(folder.path(".preferences.json.0123456789abcdef.tmp"), "{");
    const std::filesystem::path inUse = folder.path(".preferences.json.0000000000000000.tmp");
    ScratchFolder::writeTo(inUse, "{");
    const int descriptor = open(inUse.c_str(), O_RDONLY | O_CLOEXEC);
    QCOMPARE(flock(descriptor, LOCK_EX), 0);
    JsonPreferences(folder.file()).setValue(key, 1);
    QVERIFY(std::filesystem::exists(inUse));
    close(descriptor);
    JsonPreferences(folder.file()).setValue(key, 2);
    const QStringList names = folder.names();
    QCOMPARE(QSet<QString>(names.cbegin(), names.cend()),
             QSet<QString>(foreignFiles.cbegin(), foreignFiles.cend()) << u"preferences.json"_s);
}

void PreferencesFailureTest::theWaitForALockedFolderIsShort()
{
    const ScratchFolder folder;
    const int descriptor = open(folder.path("").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    QCOMPARE(flock(descriptor, LOCK_EX), 0);
    QElapsedTimer timer;
    timer.start();
    JsonPreferences(folder.file()).setValue(key, 1);
    QVERIFY(timer.elapsed() >= 400);
    QVERIFY(timer.elapsed() < 5'000);
    close(descriptor);
    QCOMPARE(folder.bytes(), "{\n    \"key\": 1\n}\n"_ba);
}

ORVANE_TEST(PreferencesFailureTest, QCoreApplication)
#include "PreferencesFailureTest.moc"
