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

std::unique_ptr<ArchiveReader> open(QByteArrayView bytes)
{
    return std::make_unique<LibarchiveReader>(bytes);
}

/// An installer in version 1.2, and the makers whose key it has.
struct Fixture
{
    /// The feed item for `archive`, signed by the makers.
    [[nodiscard]] AppcastItem announced(const QByteArray &archive, const char *version) const
    {
        AppcastItem item;
        item.version = UpdateVersion(QString::fromLatin1(version));
        item.length = archive.size();
        item.signature = QByteArray::fromBase64(makers.sign(archive), urlEncoding);
        return item;
    }

    /// Whether prepare() answers once, on this thread and from the event loop.
    [[nodiscard]] bool prepare(const QByteArray &archive, const AppcastItem &item)
    {
        answers.clear();
        installer->prepare(archive, item, context, [this](const UpdateInstaller::Result &result) {
            isOnThisThread = QThread::currentThread() == qApp->thread();
            answers.push_back(result);
        });
        return answers.empty() && QTest::qWaitFor([this] { return !answers.empty(); }, 60'000) &&
               answers.size() == 1 && isOnThisThread;
    }

    [[nodiscard]] bool prepare(const char *version)
    {
        const QByteArray archive = ArchiveMaker::packedUpdate(version);
        return prepare(archive, announced(archive, version));
    }

    [[nodiscard]] bool failedWith(UpdateFailure failure) const
    {
        return answers.front() == UpdateInstaller::Result(failure);
    }

    [[nodiscard]] bool prepared(const char *version) const
    {
        return answers.front() == UpdateInstaller::Result(UpdateVersion(QString::fromLatin1(version)));
    }

    const InstallationFixture installation;
    const Signer makers;
    std::unique_ptr<HomeInstaller> installer = std::make_unique<HomeInstaller>(
        installation.seenBy("1.2"), UpdateSignature::parsePublicKey(makers.publicKeyBase64()),
        UpdateVersion(u"1.2"_s), &open);
    QObject context;
    std::vector<UpdateInstaller::Result> answers;
    bool isOnThisThread = false;
};

} // namespace

class HomeInstallerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void abilityByInstallation()
    {
        const auto ability = [](NoInstallation reason) {
            return HomeInstaller(reason, {}, UpdateVersion(u"1.2"_s), &open).ability();
        };
        QCOMPARE(ability(NoInstallation::PackageManager), UpdateInstaller::Ability::PackageManager);
        QCOMPARE(ability(NoInstallation::BuildTree), UpdateInstaller::Ability::Unpacked);
        QCOMPARE(ability(NoInstallation::NotWritable), UpdateInstaller::Ability::NotAllowed);
        QCOMPARE(Fixture().installer->ability(), UpdateInstaller::Ability::Itself);
    }

    static void aCompleteUpdate()
    {
        Fixture f;
        QVERIFY(f.prepare("1.3"));
        QVERIFY(f.prepared("1.3"));
        QVERIFY(f.installation.isComplete("1.3"));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.2"_s);
        QVERIFY(!f.installer->isOnTrial());
        QVERIFY(f.installer->isInstalled(UpdateVersion(u"1.3"_s)));
        QVERIFY(!f.installer->isInstalled(UpdateVersion(u"1.4"_s)));

        QVERIFY(f.installer->activate(UpdateVersion(u"1.3"_s)));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.3"_s);
        QCOMPARE(f.installer->nextVersion().text(), u"1.3"_s);

        HomeInstaller next(f.installation.seenBy("1.3"), {}, UpdateVersion(u"1.3"_s), &open);
        QVERIFY(next.isOnTrial());
        next.confirm();
        QVERIFY(!next.isOnTrial());
        next.confirm();
    }

    static void activatingAMissingVersion()
    {
        const Fixture f;
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: mise à jour: no newer whole version: 1.3");
        QVERIFY(!f.installer->activate(UpdateVersion(u"1.3"_s)));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.2"_s);
    }

    static void aLaterKeyOfTheMakers()
    {
        Fixture f;
        const Signer later;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        AppcastItem item = f.announced(archive, "1.3");
        item.signature = QByteArray::fromBase64(later.sign(archive), urlEncoding);
        QVERIFY(f.prepare(archive, item));
        QVERIFY(f.failedWith(UpdateFailure::NotGenuine));
        item.laterKeys = {Ed25519::publicKey(later.publicKeyBase64()).value()};
        QVERIFY(f.prepare(archive, item));
        QVERIFY(f.prepared("1.3"));
    }

    static void anArchiveWithoutPrograms()
    {
        Fixture f;
        std::vector<ArchiveMaker::Entry> entries = ArchiveMaker::update("1.3");
        std::erase_if(entries, [](const auto &entry) { return entry.path.ends_with("orvanebreak-program"); });
        const QByteArray archive = ArchiveMaker::packed(entries);
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: mise à jour: the archive contains no programs");
        QVERIFY(f.prepare(archive, f.announced(archive, "1.3")));
        QVERIFY(f.failedWith(UpdateFailure::Damaged));
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void theLogSaysWhatIsWrongWithAnArchive()
    {
        Fixture f;
        QTest::ignoreMessage(QtInfoMsg, "OrvaneBreak: mise à jour: damaged archive: ");
        QVERIFY(f.prepare("no archive", f.announced("no archive", "1.3")));
        QVERIFY(f.failedWith(UpdateFailure::Damaged));
    }

    static void aVersionThatFailedItsTrial()
    {
        Fixture f;
        QVERIFY(f.prepare("1.3"));
        ScratchFolder::writeTo(f.installation.root() / "failed", "1.3\n2\n");
        QCOMPARE(f.installer->failedVersion().text(), u"1.3"_s);
        f.installer->forgetFailure();
        QVERIFY(!f.installer->failedVersion().isValid());
        QVERIFY(!f.installer->isInstalled(UpdateVersion(u"1.3"_s)));
    }

    static void aForeignSignature()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        AppcastItem item = f.announced(archive, "1.3");
        item.signature = f.announced("another", "1.3").signature;
        QVERIFY(f.prepare(archive, item));
        QVERIFY(f.failedWith(UpdateFailure::NotGenuine));

        f.installer = std::make_unique<HomeInstaller>(f.installation.seenBy("1.2"), std::nullopt,
                                                      UpdateVersion(u"1.2"_s), &open);
        QVERIFY(f.prepare("1.3"));
        QVERIFY(f.failedWith(UpdateFailure::NotGenuine));
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void anotherVersionThanAnnounced()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.4");
        QVERIFY(f.prepare(archive, f.announced(archive, "1.3")));
        QVERIFY(f.failedWith(UpdateFailure::Damaged));
        for (const char *old : {"1.1", "1.2"}) {
            QVERIFY(f.prepare(old));
            QVERIFY(f.failedWith(UpdateFailure::Damaged));
        }
        QVERIFY(f.prepare("no archive", f.announced("no archive", "1.3")));
        QVERIFY(f.failedWith(UpdateFailure::Damaged));
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void anotherProcessHoldsTheLock()
    {
        Fixture f;
        QVERIFY(f.prepare("1.3"));
        const auto other = InstallationChange::begin(f.installation.seenBy("1.2"));
        QVERIFY(other);
        QVERIFY(f.prepare("1.4"));
        QVERIFY(f.failedWith(UpdateFailure::Disk));
        QVERIFY(!f.installer->activate(UpdateVersion(u"1.3"_s)));
        QCOMPARE(f.installation.seenBy("1.2").current().text(), u"1.2"_s);
    }

    static void withoutAnInstallationNothingHappens()
    {
        Fixture f;
        f.installer = std::make_unique<HomeInstaller>(NoInstallation::BuildTree, std::nullopt,
                                                      UpdateVersion(u"1.2"_s), &open);
        QVERIFY(f.prepare("1.3"));
        QVERIFY(f.failedWith(UpdateFailure::Disk));
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
        QVERIFY(f.failedWith(UpdateFailure::Disk));
        QCOMPARE(f.installation.versions(), QStringList{u"1.2"_s});
    }

    static void aDestroyedContextGetsNoAnswer()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        auto context = std::make_unique<QObject>();
        bool isAnswered = false;
        f.installer->prepare(archive, f.announced(archive, "1.3"), *context,
                             [&](const UpdateInstaller::Result & /*result*/) { isAnswered = true; });
        context.reset();
        QVERIFY(f.prepare("1.4"));
        QVERIFY(f.prepared("1.4"));
        QVERIFY(f.installation.isComplete("1.3") && f.installation.isComplete("1.4"));
        QVERIFY(!isAnswered);
    }

    static void destructionWaitsForTheThread()
    {
        Fixture f;
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        bool isAnswered = false;
        f.installer->prepare(archive, f.announced(archive, "1.3"), f.context,
                             [&](const UpdateInstaller::Result & /*result*/) { isAnswered = true; });
        f.installer.reset();
        QVERIFY(f.installation.isComplete("1.3"));
        QVERIFY(InstallationChange::begin(f.installation.seenBy("1.2")));
        QCoreApplication::processEvents();
        QVERIFY(!isAnswered);
    }
};

ORVANE_TEST(HomeInstallerTest, QCoreApplication)
#include "HomeInstallerTest.moc"
