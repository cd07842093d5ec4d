// SPDX-License-Identifier: GPL-3.0-or-later
#include "CanberraChime.h"

#include "Support/TestProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr int timeoutMilliseconds = 10'000;

const QString taskFolder = u"/proc/self/task/"_s;

qsizetype threadCount()
{
    return QDir(taskFolder).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

/// A program that carries out one command per line and then prints it. It exits at the end of its input, even
/// while a sound is playing.
int obeyCommands(const QString &soundsFolder)
{
    // A sanitizer starts a thread of its own together with the first thread. The kernel lists a joined thread
    // for a moment longer.
    pid_t first = 0;
    std::thread([&first] { first = gettid(); }).join();
    if (!QTest::qWaitFor([=] { return !QFile::exists(taskFolder + QString::number(first)); },
                         timeoutMilliseconds))
        return EXIT_FAILURE;
    const qsizetype threadsAtRest = threadCount();
    auto chime = std::make_unique<CanberraChime>(soundsFolder);
    for (std::string command; std::getline(std::cin, command);) {
        if (command == "play")
            chime->play(u"Glass"_s);
        else if (command == "destroy")
            chime.reset();
        else if (command == "rest" &&
                 !QTest::qWaitFor([=] { return threadCount() == threadsAtRest; }, timeoutMilliseconds))
            return EXIT_FAILURE;
        std::cout << command << std::endl;
    }
    return EXIT_SUCCESS;
}

} // namespace

/// Plays in a process of its own, whose end and standard error the tests watch.
class CanberraChimeTest : public QObject
{
    Q_OBJECT

private:
    void start(const QString &soundsFolder = QStringLiteral(SOUNDS_FOLDER))
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PULSE_SERVER"_s, u"unix:"_s + m_serverFile);
        // A player that exits while the sound library writes its cookie leaves half a cookie to the next.
        environment.insert(u"HOME"_s, m_folder->path());
        environment.insert(u"XDG_CONFIG_HOME"_s, m_folder->path());
        m_player->setProcessEnvironment(environment);
        m_player->start(QCoreApplication::applicationFilePath(),
                        {u"CanberraChimeTest"_s, u"--obey"_s, soundsFolder});
    }

    /// Whether the player has carried out `command`.
    bool tell(const QByteArray &command)
    {
        m_player->write(command + '\n');
        while (!m_player->canReadLine() && m_player->waitForReadyRead(timeoutMilliseconds)) {
        }
        return m_player->readLine() == command + '\n';
    }

    /// Whether the player has exited by itself with success.
    bool leave()
    {
        m_player->closeWriteChannel();
        return m_player->waitForFinished(timeoutMilliseconds) &&
               m_player->exitStatus() == QProcess::NormalExit && m_player->exitCode() == EXIT_SUCCESS;
    }

    bool waitForConnection()
    {
        return m_server->hasPendingConnections() || m_server->waitForNewConnection(timeoutMilliseconds);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_serverFile;
    std::unique_ptr<QLocalServer> m_server;
    std::unique_ptr<QProcess> m_player;

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_serverFile = m_folder->filePath(u"server"_s);
        m_server = std::make_unique<QLocalServer>();
        m_player = std::make_unique<QProcess>();
        QVERIFY(m_server->listen(m_serverFile));
    }

    void cleanup()
    {
        m_player->kill();
        m_player->waitForFinished(timeoutMilliseconds);
        QCOMPARE(m_player->readAllStandardError(), QByteArray());
    }

    void withoutAServerItIsSilent()
    {
        m_server->close();
        QVERIFY(!QFile::exists(m_serverFile));
        start();
        QVERIFY(tell("play"));
        QVERIFY(tell("rest"));
        QVERIFY(leave());
    }

    void withoutASoundTheServerIsNotTroubled()
    {
        start(m_folder->path());
        QVERIFY(tell("play"));
        QVERIFY(tell("rest"));
        QVERIFY(leave());
        QVERIFY(!m_server->waitForNewConnection(0));
    }

    void aHangingServerHoldsUpNobody()
    {
        start();
        QVERIFY(tell("play"));
        QVERIFY(waitForConnection());
        QVERIFY(tell("destroy"));
        QVERIFY(leave());
    }

    void leavingAtOnceIsSafe()
    {
        start();
        QVERIFY(tell("play"));
        QVERIFY(leave());
    }

    void oneSoundAtATime()
    {
        start();
        QVERIFY(tell("play"));
        QVERIFY(waitForConnection());
        QVERIFY(tell("play"));
        m_server->nextPendingConnection()->abort();
        QVERIFY(tell("rest"));
        QVERIFY(!m_server->waitForNewConnection(0));

        QVERIFY(tell("play"));
        QVERIFY(waitForConnection());
        QVERIFY(tell("destroy"));
        m_server->nextPendingConnection()->abort();
        QVERIFY(tell("rest"));
        QVERIFY(leave());
    }
};

static int runCanberraChimeTest(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments[1] == u"--obey"_s)
        return obeyCommands(arguments[2]);
    CanberraChimeTest test;
    return QTest::qExec(&test, argc, argv);
}

ORVANE_TEST_WITH_MAIN(CanberraChimeTest, runCanberraChimeTest)

#include "CanberraChimeTest.moc"
