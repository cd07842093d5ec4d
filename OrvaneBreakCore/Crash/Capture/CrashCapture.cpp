// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashCapture.h"

#include "CallStack.h"
#include "CrashText.h"
#include "ExceptionText.h"
#include "ProgramSymbols.h"
#include "ReportFile.h"
#include "SignalStack.h"

#include <QDir>

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <exception>

namespace {

constexpr int fatalSignals[] = {SIGABRT, SIGSEGV, SIGILL, SIGBUS, SIGFPE, SIGTRAP};
constexpr std::size_t framesOfReport = 30;

/// A report that takes longer than this has met a lock that nobody will release.
constexpr unsigned patienceSeconds = 1;

/// All that a handler uses, made beforehand and never destroyed: threads may crash while the process ends.
struct Capture
{
    explicit Capture(const std::filesystem::path &file)
        : report(file)
        , home(QDir::homePath().toStdString())
        , login(qgetenv("USER").toStdString())
    {
    }

    /// Writes what was collected so far.
    void persistSignal(int number)
    {
        CrashText message;
        message.append("Signal ").appendDecimal(static_cast<std::uint64_t>(number));
        stackText.clear();
        stack.appendTo(stackText, framesOfReport, symbols);
        report.write(message.view(), stackText.view());
    }

    void persistException()
    {
        stack.captureHere();
        stack.dropThrowing();
        const ExceptionText exception = ExceptionText::ofCurrentException();
        stackText.clear();
        stack.appendTo(stackText, framesOfReport, symbols);
        report.write("Exception: " + exception.name + " : " + withoutUser(exception.reason, home, login),
                     stackText.view());
    }

    ReportFile report;
    ProgramSymbols symbols;
    SignalStack mainThreadStack;
    CallStack stack;
    CrashText stackText;
    std::string home;
    std::string login;
    std::atomic<pid_t> dyingThread = 0;  ///< The thread that reports; 0 while all is well.
    std::atomic<int> dyingSignal = 0;    ///< What the process dies of.
    std::atomic<int> attempts = 0;       ///< How often the reporting thread has come here.
    std::atomic<bool> isWritten = false; ///< Nothing that follows may replace the report.
};

Capture *capture = nullptr;

pid_t currentThread()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

/// Does not return where the signal is not blocked.
void dieOf(int number)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
    raise(number);
}

void dieAfterAll(int /*alarm*/)
{
    // This may be any thread. The signal is for the process, and its action is the default one by now.
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(capture->dyingSignal, &action, nullptr);
    kill(getpid(), capture->dyingSignal);
}

/// Ends a process whose report hangs. Fatal signals that come meanwhile have to get through as well.
void limitTime()
{
    struct sigaction action = {};
    action.sa_handler = &dieAfterAll;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t wanted = {};
    sigemptyset(&wanted);
    sigaddset(&wanted, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &wanted, nullptr);
    alarm(patienceSeconds);
}

/// Makes the current thread the one that reports. Another one that dies meanwhile stays here until the
/// process has ended. Returns how often this thread has come here.
int takeTurn(int number)
{
    pid_t expected = 0;
    const pid_t self = currentThread();
    if (capture->dyingThread.compare_exchange_strong(expected, self)) {
        capture->dyingSignal = number;
        limitTime();
    } else if (expected != self) {
        for (;;)
            pause();
    }
    return ++capture->attempts;
}

void handleSignal(int number, siginfo_t * /*information*/, void *context)
{
    const int attempt = takeTurn(number);
    if (!capture->isWritten && attempt == 1) {
        capture->stack.captureInterrupted(*static_cast<const ucontext_t *>(context));
        capture->persistSignal(number);
    } else if (!capture->isWritten && attempt == 2) {
        // The stack is so damaged that following it has failed; some of its frames are known.
        capture->persistSignal(capture->dyingSignal);
    }
    dieOf(capture->dyingSignal);
}

[[noreturn]] void handleTerminate()
{
    takeTurn(SIGABRT);
    capture->persistException();
    capture->isWritten = true;
    std::abort();
}

void handleSignals()
{
    struct sigaction action = {};
    action.sa_sigaction = &handleSignal;
    action.sa_flags = static_cast<int>(SA_SIGINFO | SA_ONSTACK | SA_NODEFER);
    sigemptyset(&action.sa_mask);
    for (const int number : fatalSignals)
        sigaction(number, &action, nullptr);
}

} // namespace

void CrashCapture::install(const std::filesystem::path &file)
{
    CallStack::prepare();
    capture = new Capture(file);
    std::set_terminate(&handleTerminate);
    handleSignals();
}
