// SPDX-License-Identifier: GPL-3.0-or-later
#include "AutostartEntry.h"

#include "Support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

/// Creates an empty program in the folder of a version and returns its path.
QString emptyProgram(const QString &version, const QString &name)
{
    QFile program(version + u"/bin/"_s + name);
    if (!QDir().mkpath(version + u"/bin"_s) || !program.open(QIODevice::WriteOnly) ||
        !program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
        qFatal("cannot write a program of the test");
    return program.fileName();
}

/// Requires that the next call logs why it failed, in one line.
void expectFailure()
{
    static const QRegularExpression line(u"^OrvaneBreak: ouverture à la connexion: /[^\\n]+: [^\\n]+$"_s);
    QTest::ignoreMessage(QtInfoMsg, line);
}

} // namespace

class AutostartEntryTest : public QObject
{
    Q_OBJECT

    struct Folder
    {
        QTemporaryDir folder;
        QString file = folder.filePath(u"autostart/ch.example.Eyes.desktop"_s);
        QString program = emptyProgram(folder.filePath(u"a b"_s), u"orvanebreak"_s);
        AutostartEntry entry{{file, program, {u"ubuntu"_s, u"GNOME"_s}}};

        void write(const QByteArray &content) const
        {
            QDir().mkpath(QFileInfo(file).path());
            QFile written(file);
            QVERIFY(written.open(QIODevice::WriteOnly));
            written.write(content);
        }

        [[nodiscard]] QString content() const
        {
            QFile read(file);
            return read.open(QIODevice::ReadOnly) ? QString::fromUtf8(read.readAll()) : QString();
        }
    };

private Q_SLOTS:
    void registeredAndUnregistered()
    {
        Folder f;
        QVERIFY(!f.entry.isEnabled());
        QVERIFY(f.entry.setEnabled(true));
        QVERIFY(f.entry.isEnabled());
        QVERIFY(f.content().contains(u"\nExec=\"%1\"\n"_s.arg(f.program)));
        QVERIFY(f.entry.setEnabled(false));
        QVERIFY(!f.entry.isEnabled());
        QVERIFY(!QFile::exists(f.file));
        QVERIFY(f.entry.setEnabled(false));
    }

    void stateIsReadFromTheFile_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("isOn");
        const QByteArray start = "[Desktop Entry]\nType=Application\nExec=sh\n";
        QTest::newRow("plain") << start << true;
        QTest::newRow("hidden") << start + "Hidden=true\n" << false;
        QTest::newRow("not hidden") << start + "Hidden = false\n" << true;
        QTest::newRow("hidden in another group") << start + "[Other]\nHidden=true\n" << true;
        QTest::newRow("commented") << start + "#Hidden=true\n" << true;
        QTest::newRow("switched off") << start + "X-GNOME-Autostart-enabled=false\n" << false;
        QTest::newRow("for this desktop") << start + "OnlyShowIn=KDE;GNOME;\n" << true;
        QTest::newRow("for another desktop") << start + "OnlyShowIn=KDE;\n" << false;
        QTest::newRow("for no desktop") << start + "OnlyShowIn=\n" << false;
        QTest::newRow("not for this desktop") << start + "NotShowIn=GNOME;\n" << false;
        QTest::newRow("not for another desktop") << start + "NotShowIn=KDE;\n" << true;
        QTest::newRow("windows line ends")
            << QByteArray("[Desktop Entry]\r\nType=Application\r\nExec=sh\r\nHidden=true\r\n") << false;
        const QByteArray application = "[Desktop Entry]\nType=Application\n";
        QTest::newRow("with arguments") << application + "Exec=/bin/sh -c true\n" << true;
        QTest::newRow("no such program") << application + "Exec=\"/gone/bin/orvanebreak\"\n" << false;
        QTest::newRow("no such command") << application + "Exec=orvanebreak-gone\n" << false;
        QTest::newRow("switched off by a tool") << application + "Exec=/bin/false\n" << false;
        QTest::newRow("program to try") << start + "TryExec=/bin/sh\n" << true;
        QTest::newRow("no program to try") << start + "TryExec=/gone/bin/orvanebreak\n" << false;
        QTest::newRow("no command") << QByteArray("[Desktop Entry]\nType=Application\n") << false;
        QTest::newRow("no group") << QByteArray("Type=Application\nExec=x\n") << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("binary") << QByteArray(1000, '\0') << false;
    }

    void stateIsReadFromTheFile()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const bool, isOn);
        Folder f;
        f.write(content);
        QCOMPARE(f.entry.isEnabled(), isOn);
        // Registering replaces any file.
        QVERIFY(f.entry.setEnabled(true));
        QVERIFY(f.entry.isEnabled());
    }

    void aFolderThatIsAFileIsAFailure()
    {
        Folder f;
        QFile file(QFileInfo(f.file).path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        expectFailure();
        QVERIFY(!f.entry.setEnabled(true));
        QVERIFY(!f.entry.isEnabled());
    }

    void anEntryThatIsAFolderIsAFailure()
    {
        Folder f;
        QVERIFY(QDir().mkpath(f.file + u"/full"_s));
        for (const bool isWanted : {true, false}) {
            expectFailure();
            QVERIFY(!f.entry.setEnabled(isWanted));
        }
        QVERIFY(!f.entry.isEnabled());
    }

    void pathsAreQuoted()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"e.desktop"_s);
        AutostartEntry entry({file, uR"(/home/a b/100 %/"q"$`\/orvanebreak)"_s, {}});
        QVERIFY(entry.setEnabled(true));
        QVERIFY2(!entry.isEnabled(), "there is no such program");
        QFile read(file);
        QVERIFY(read.open(QIODevice::ReadOnly));
        const QByteArray expected =
            "\nExec=\"/home/a b/100 %%/\\\\\"q\\\\\"\\\\$\\\\`\\\\\\\\/orvanebreak\"\n";
        const QByteArray content = read.readAll();
        QVERIFY2(content.contains(expected), content.constData());
    }

    void theEntryOfAProgramThatIsGoneIsRenewed()
    {
        const QByteArray gone = "[Desktop Entry]\nType=Application\nExec=\"/gone/bin/orvanebreak\"\n";
        Folder f;
        f.entry.renew();
        QVERIFY(!QFile::exists(f.file));
        f.write(gone);
        f.entry.renew();
        QVERIFY(f.entry.isEnabled());
        QVERIFY(f.content().contains(f.program));
        for (const QByteArray &other :
             {gone + "Hidden=true\n", QByteArray(gone).replace("orvanebreak", "other"),
              QByteArray(gone).replace("/gone/bin/orvanebreak", "/bin/false")}) {
            f.write(other);
            f.entry.renew();
            QCOMPARE(f.content(), QString::fromUtf8(other));
        }
    }

    void pathsAreReadAsTheyAreWritten()
    {
        const QTemporaryDir folder;
        const QString program = emptyProgram(folder.filePath(uR"(100 %"q"$`\x)"_s), u"orvanebreak"_s);
        AutostartEntry entry({folder.filePath(u"e.desktop"_s), program, {}});
        QVERIFY(entry.setEnabled(true));
        QVERIFY(entry.isEnabled());
    }

    void theCommandStaysValidAfterUpdates()
    {
        const QTemporaryDir folder;
        const QString version = folder.filePath(u"versions/1.0"_s);
        const QString program = emptyProgram(version, u"orvanebreak"_s);
        QCOMPARE(AutostartEntry::stableExecutable(program), program);
        QVERIFY(QFile::link(version, folder.filePath(u"current"_s)));
        QCOMPARE(AutostartEntry::stableExecutable(program), folder.filePath(u"current/bin/orvanebreak"_s));
        QCOMPARE(AutostartEntry::stableExecutable(u"/usr/bin/orvanebreak"_s), u"/usr/bin/orvanebreak"_s);
    }

    void theLauncherIsStarted()
    {
        const QTemporaryDir folder;
        const QString version = folder.filePath(u"versions/1.0"_s);
        const QString program = emptyProgram(version, u"orvanebreak-program"_s);
        QCOMPARE(AutostartEntry::stableExecutable(program), program);
        QFile launcher(version + u"/bin/orvanebreak"_s);
        QVERIFY(launcher.open(QIODevice::WriteOnly));
        QVERIFY(launcher.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        QCOMPARE(AutostartEntry::stableExecutable(program), launcher.fileName());
        QVERIFY(QFile::link(version, folder.filePath(u"current"_s)));
        QCOMPARE(AutostartEntry::stableExecutable(program), folder.filePath(u"current/bin/orvanebreak"_s));
    }

    void standardPlace()
    {
        qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
        qputenv("XDG_CONFIG_HOME", "/somewhere");
        const auto absolute = AutostartEntry::standardParameters(u"ch.example.Eyes"_s);
        QCOMPARE(absolute.file, u"/somewhere/autostart/ch.example.Eyes.desktop"_s);
        QCOMPARE(absolute.desktops, (QStringList{u"ubuntu"_s, u"GNOME"_s}));
        qputenv("XDG_CONFIG_HOME", "relative");
        QCOMPARE(AutostartEntry::standardParameters(u"e"_s).file,
                 QDir::homePath() + u"/.config/autostart/e.desktop"_s);
    }
};

ORVANE_TEST(AutostartEntryTest, QCoreApplication)
#include "AutostartEntryTest.moc"
