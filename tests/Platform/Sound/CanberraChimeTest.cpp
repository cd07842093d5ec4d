// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Sound/CanberraChime.h"

#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// Each case runs in a process of its own, whose output and end are watched: this program started again with an argument.
class CanberraChimeTest : public QObject
{
    Q_OBJECT

    struct Run
    {
        bool hasEnded = false;
        int exitCode = -1;
        QByteArray output;
    };

    static Run playInAnotherProcess(const QString &sound, const QString &server)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PULSE_SERVER"_s, server);
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {u"--play"_s, sound});
        Run run;
        run.hasEnded = process.waitForFinished(20000);
        run.exitCode = process.exitCode();
        run.output = process.readAll();
        if (!run.hasEnded)
            process.kill();
        process.waitForFinished();
        return run;
    }

private Q_SLOTS:
    void silentWithoutAServer()
    {
        const Run run = playInAnotherProcess(u"Glass"_s, u"unix:/nonexistent/pulse"_s);
        QVERIFY(run.hasEnded);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.output, QByteArray());
    }

    void silentWithoutTheSound()
    {
        const Run run = playInAnotherProcess(u"Nothing"_s, u"unix:/nonexistent/pulse"_s);
        QVERIFY(run.hasEnded);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.output, QByteArray());
    }

    void aServerThatNeverAnswersDelaysNothing()
    {
        const QTemporaryDir folder;
        QLocalServer server;
        QVERIFY(server.listen(folder.filePath(u"pulse"_s)));
        const Run run = playInAnotherProcess(u"Glass"_s, u"unix:"_s + server.fullServerName());
        QVERIFY(run.hasEnded);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.output, QByteArray());
        // The process did connect: it ended although nobody answered it.
        QVERIFY(server.waitForNewConnection(1000));
    }
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (application.arguments().value(1) != "--play"_L1) {
        CanberraChimeTest test;
        return QTest::qExec(&test, argc, argv);
    }
    CanberraChime chime(QStringLiteral(SOUNDS_FOLDER));
    QElapsedTimer timer;
    timer.start();
    chime.play(application.arguments().value(2));
    const bool isQuick = timer.elapsed() < 500;
    // Time for the other thread to get as far as it can.
    QTest::qWait(300);
    return isQuick ? 0 : 1;
}

#include "CanberraChimeTest.moc"
