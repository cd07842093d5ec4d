// SPDX-License-Identifier: GPL-3.0-or-later
#include "Module.h"

#include "ArchiveModule.h"
#include "ArchiveReader.h"
#include "Chime.h"
#include "Downloads.h"
#include "Http.h"
#include "NetworkModule.h"
#include "SoundModule.h"
#include "Support/ArchiveMaker.h"
#include "Support/ScratchFolder.h"
#include "Support/ScriptedServer.h"
#include "Support/TestProgram.h"

#include <QApplication>
#include <QFile>
#include <QTest>

#include <filesystem>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// The warning about the module `path` that cannot be used.
QRegularExpression warningAbout(const QString &path, const QString &reason = u"."_s)
{
    return QRegularExpression(u"^OrvaneBreak: "_s + QRegularExpression::escape(path) +
                              u" cannot be used: .*"_s + reason);
}

void expectRefused(const QString &path, const QString &reason = u"."_s)
{
    QTest::ignoreMessage(QtWarningMsg, warningAbout(path, reason));
    QVERIFY(!Module::load(path));
}

} // namespace

/// The interface of a module that is not installed.
class MissingModule : public ModuleInterface
{
public:
    static constexpr const char *fileName = "missing.so";
    [[nodiscard]] virtual std::unique_ptr<int> makeNumber() const = 0;
};

Q_DECLARE_INTERFACE(MissingModule, "OrvaneBreak.MissingModule")

/// The modules of the build, loaded as the program loads them.
class ModuleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    static void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    static void theNetwork()
    {
        const auto *module = Module::load<NetworkModule>();
        QVERIFY(module);
        QCOMPARE(Module::load<NetworkModule>(), module);

        ScriptedServer server;
        server.reply = answerWith("200 OK", "answer");
        const std::unique_ptr<Http> http = module->makeHttp();
        QObject context;
        std::optional<HttpAnswer> answer;
        http->get(server.url(), 20s, context, [&answer](const auto &result) { answer = result; });
        QTRY_VERIFY(answer);
        QCOMPARE(answer->body, "answer");

        server.reply = answerWith("200 OK", "file");
        server.received.clear();
        const std::unique_ptr<Downloads> downloads = module->makeDownloads();
        QByteArray file;
        std::optional<Downloads::End> end;
        const auto exchange =
            downloads->get(server.url(), 0,
                           {[](qint64 /*offset*/) {}, [&file](const auto &bytes) { file += bytes; },
                            [&end](Downloads::End reason) { end = reason; }});
        QTRY_VERIFY(end);
        QCOMPARE(*end, Downloads::End::Complete);
        QCOMPARE(file, "file");
    }

    static void theSounds()
    {
        const auto chime = Module::make(&SoundModule::makeChime, u"/nowhere"_s);
        QVERIFY(chime);
        // There is no such file, so nothing is heard.
        chime->play(u"Glass"_s);
    }

    static void theArchives()
    {
        const QByteArray archive = ArchiveMaker::packedUpdate("1.3");
        const auto reader = Module::make(&ArchiveModule::open, QByteArrayView(archive));
        QVERIFY(reader);
        const auto first = reader->next();
        QVERIFY(std::holds_alternative<ArchiveEntry>(first));
        QVERIFY(std::get<ArchiveEntry>(first).path.starts_with("OrvaneBreak-1.3"));
    }

    static void aMissingModuleMakesNothing()
    {
        QTest::ignoreMessage(QtWarningMsg, warningAbout(Module::folder() + u"/missing.so"_s));
        QVERIFY(!Module::make(&MissingModule::makeNumber));
    }

    static void otherFilesAreRefused()
    {
        const ScratchFolder folder;
        const auto path = [&folder](const char *name) {
            return QString::fromStdString(folder.path(name).string());
        };
        expectRefused(path("missing.so"));

        ScratchFolder::writeTo(folder.path("text.so"), "text");
        expectRefused(path("text.so"));

        ScratchFolder::writeTo(folder.path("empty.so"), "");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"failed to map"_s));
        expectRefused(path("empty.so"));

        QFile whole(Module::folder() + u"/archive.so"_s);
        QVERIFY(whole.open(QIODevice::ReadOnly));
        const QByteArray bytes = whole.readAll();
        for (const qsizetype length : {1, 63, 4'000}) {
            const std::string name = "truncated-" + std::to_string(length);
            ScratchFolder::writeTo(folder.path(name), bytes.first(length));
            expectRefused(path(name.c_str()));
        }

        std::filesystem::create_directory(folder.path("folder.so"));
        expectRefused(path("folder.so"));

        expectRefused(QStringLiteral(NO_MODULE), u"plugin"_s);
    }

    static void anotherVersionIsRefused()
    {
        expectRefused(QStringLiteral(ANOTHER_VERSION), u"another version"_s);
    }

    static void aRepairedModuleIsLoaded()
    {
        const ScratchFolder folder;
        const QString path = QString::fromStdString(folder.path("late.so").string());
        expectRefused(path);
        QVERIFY(QFile::copy(Module::folder() + u"/archive.so"_s, path));
        QVERIFY(Module::load(path));
    }
};

ORVANE_TEST(ModuleTest, QApplication)
#include "ModuleTest.moc"
