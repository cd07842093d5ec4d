// SPDX-License-Identifier: GPL-3.0-or-later
#include "HomeInstaller.h"

#include "InstallationFixture.h"
#include "Support/Signer.h"
#include "Support/TestProgram.h"

#include <QCoreApplication>
#include <QThread>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr auto urlEncoding = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

/// The installer that runs as version 1.2, and the makers that it believes.
std::unique_ptr<ArchiveReader> open(QByteArrayView bytes)
{
    return std::make_unique<LibarchiveReader>(bytes);
}

struct Fixture
{
    /// What the makers announce of `archive`.
    [[nodiscard]] AppcastItem announced(const QByteArray &archive, const char *version) const
    {
        AppcastItem item;
        item.version = UpdateVersion(QString::fromLatin1(version));
        item.length = archive.size();
        item.signature = QByteArray::fromBase64(makers.sign(archive), urlEncoding);
        return item;
    }

    /// Prepares what is announced in this way; whether it answers, once, on this thread and not at once.
    [[nodiscard]] bool prepare(const QByteArray &archive, const AppcastItem &item)
    {
        answers.clear();
        installer->prepare(archive, item, context, [this](std::optional<UpdateFailure> failure) {
            isOnThisThread = QThread::currentThread() == qApp->thread();
            answers.push_back(failure);
        });
        return answers.empty() && QTest::qWaitFor([this] { return !answers.empty(); }, 60'000) &&
               answers.size() == 1 && isOnThisThread;
    }

    [[nodiscard]] bool prepare(const char *version)
    {
        const QByteArray archive = ArchiveMaker::packedUpdate(version);
        return prepare(archive, announced(archive, version));
    }

    const InstallationFixture installation;
    const Signer makers;
    std::unique_ptr<HomeInstaller> installer = std::make_unique<HomeInstaller>(
        installation.seenBy("1.2"), UpdateSignature::parsePublicKey(makers.publicKeyBase64()),
        UpdateVersion(u"1.2"_s), &open);
    QObject context;
    std::vector<std::optional<UpdateFailure>> answers;
    bool isOnThisThread = false;
};

} // namespace

class HomeInstallerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void whoReplacesTheProgram()
    {
        const auto ability = [](NoInstallation reason) {
            return HomeInstaller(reason, {}, UpdateVersion(u"1.2"_s), &open).ability();
        };
        QCOMPARE(ability(NoInstallation::PackageManager), UpdateInstaller::Ability::Others);
        QCOMPARE(ability(NoInstallation::BuildTree), UpdateInstaller::Ability::Others);
        QCOMPARE(ability(NoInstallation::NotWritable), UpdateInstaller::Ability::NotAllowed);
        QCOMPARE(Fixture().installer->ability(), UpdateInstaller::Ability::Itself);
    }

    static void aWholeUpdate()
    {
        Fixture f;
        QVERIFY(f.prepare("1.3"));
        QCOMPARE(f.answers.front(), std::nullopt);
        QVERIFY(f.installation.isWhole("1.3"));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.2"_s);
        QVERIFY(!f.installer->isOnTrial());

        QVERIFY(f.installer->activate(UpdateVersion(u"1.3"_s)));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.3"_s);

        HomeInstaller next(f.installation.seenBy("1.3"), {}, UpdateVersion(u"1.3"_s), &open);
        QVERIFY(next.isOnTrial());
        next.confirm();
        QVERIFY(!next.isOnTrial());
        next.confirm();
    }

    static void aVersionThatIsNotThere()
    {
        const Fixture f;
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: mise à jour: no other whole version: 1.3");
        QVERIFY(!f.installer->activate(UpdateVersion(u"1.3"_s)));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.2"_s);
    }

    static void notTheMakers()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        AppcastItem item = f.announced(archive, "1.3");
        item.signature = f.announced("another", "1.3").signature;
        QVERIFY(f.prepare(archive, item));
        QCOMPARE(f.answers.front(), UpdateFailure::NotGenuine);

        f.installer = std::make_unique<HomeInstaller>(f.installation.seenBy("1.2"), std::nullopt,
                                                      UpdateVersion(u"1.2"_s), &open);
        QVERIFY(f.prepare("1.3"));
        QCOMPARE(f.answers.front(), UpdateFailure::NotGenuine);
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void anotherVersionThanAnnounced()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.4");
        QVERIFY(f.prepare(archive, f.announced(archive, "1.3")));
        QCOMPARE(f.answers.front(), UpdateFailure::Damaged);
        for (const char *old : {"1.1", "1.2"}) {
            QVERIFY(f.prepare(old));
            QCOMPARE(f.answers.front(), UpdateFailure::Damaged);
        }
        QVERIFY(f.prepare("no archive", f.announced("no archive", "1.3")));
        QCOMPARE(f.answers.front(), UpdateFailure::Damaged);
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void somebodyElseInstalls()
    {
        Fixture f;
        QVERIFY(f.prepare("1.3"));
        const auto other = InstallationChange::begin(f.installation.seenBy("1.2"));
        QVERIFY(other);
        QVERIFY(f.prepare("1.4"));
        QCOMPARE(f.answers.front(), UpdateFailure::Disk);
        QVERIFY(!f.installer->activate(UpdateVersion(u"1.3"_s)));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.2"_s);
    }

    static void withoutAnInstallationNothingHappens()
    {
        Fixture f;
        f.installer = std::make_unique<HomeInstaller>(NoInstallation::BuildTree, std::nullopt,
                                                      UpdateVersion(u"1.2"_s), &open);
        QVERIFY(f.prepare("1.3"));
        QCOMPARE(f.answers.front(), UpdateFailure::Disk);
        QVERIFY(!f.installer->activate(UpdateVersion(u"1.3"_s)));
        f.installer->confirm();
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void withoutAReaderOfArchivesNothingIsWritten()
    {
        Fixture f;
        f.installer = std::make_unique<HomeInstaller>(
            f.installation.seenBy("1.2"), UpdateSignature::parsePublicKey(f.makers.publicKeyBase64()),
            UpdateVersion(u"1.2"_s), [](QByteArrayView /*bytes*/) { return nullptr; });
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: mise à jour: archives cannot be read now");
        QVERIFY(f.prepare("1.3"));
        QCOMPARE(f.answers.front(), UpdateFailure::Disk);
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void whoWentAwayIsNotAnswered()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        auto context = std::make_unique<QObject>();
        bool isAnswered = false;
        f.installer->prepare(archive, f.announced(archive, "1.3"), *context,
                             [&](std::optional<UpdateFailure> /*failure*/) { isAnswered = true; });
        context.reset();
        QVERIFY(f.prepare("1.4"));
        QCOMPARE(f.answers.front(), std::nullopt);
        QVERIFY(f.installation.isWhole("1.3") && f.installation.isWhole("1.4"));
        QVERIFY(!isAnswered);
    }

    static void theEndWaitsForTheDisk()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        bool isAnswered = false;
        f.installer->prepare(archive, f.announced(archive, "1.3"), f.context,
                             [&](std::optional<UpdateFailure> /*failure*/) { isAnswered = true; });
        f.installer.reset();
        QVERIFY(f.installation.isWhole("1.3"));
        QVERIFY(InstallationChange::begin(f.installation.seenBy("1.2")));
        QCoreApplication::processEvents();
        QVERIFY(!isAnswered);
    }
};

ORVANE_TEST(HomeInstallerTest, QCoreApplication)
#include "HomeInstallerTest.moc"
