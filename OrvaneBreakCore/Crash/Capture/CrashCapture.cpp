// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashCapture.h"

#include "CallStack.h"
#include "CrashText.h"
#include "ExceptionText.h"
#include "ModuleSymbols.h"
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
constexpr std::size_t maxReportFrames = 30;

/// A report that takes longer waits for a lock that is never released.
constexpr unsigned reportTimeoutSeconds = 1;

/// All that a handler uses. Made in advance and never destroyed, because threads may crash during exit.
struct Capture
{
    explicit Capture(const std::filesystem::path &file)
        : report(file)
        , home(QDir::homePath().toStdString())
        , login(qgetenv("USER").toStdString())
        , process(getpid())
    {
    }

    /// Writes the frames captured so far.
    void persistSignal(int number)
    {
        CrashText message;
        message.append("Signal ").appendDecimal(static_cast<std::uint64_t>(number));
        stackText.clear();
        stack.appendTo(stackText, maxReportFrames, symbols);
        report.write(message.view(), stackText.view());
    }

    void persistException()
    {
        stack.captureHere();
        stack.dropThrowing();
        const ExceptionText exception = ExceptionText::ofCurrentException();
        stackText.clear();
        stack.appendTo(stackText, maxReportFrames, symbols);
        report.write(
            validText("Exception: " + exception.name + " : " + withoutUser(exception.reason, home, login)),
            stackText.view());
    }

    ReportFile report;
    ModuleSymbols symbols = ModuleSymbols(ModuleSymbols::program);
    SignalStack mainThreadStack;
    CallStack stack;
    CrashText stackText;
    std::string home;
    std::string login;
    pid_t process;                          ///< The process that installed the handlers.
    std::atomic<pid_t> reportingThread = 0; ///< The thread that reports; 0 before any crash.
    std::atomic<int> fatalSignal = 0;       ///< The signal that ends the process.
    std::atomic<int> attempts = 0;          ///< How often that thread has called takeTurn().
    std::atomic<bool> isWritten = false;    ///< The report is complete; nothing may replace it.
};

Capture *capture = nullptr;

/// Whether this is not a child that has yet to start its program: its crash is not one of this program, and
/// after vfork() the memory here is its parent's. The C library may remember the process id of the parent.
bool isOwnProcess()
{
    return syscall(SYS_getpid) == capture->process;
}

pid_t currentThread()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

/// Ends the process, unless the signal is blocked.
void endWithSignal(int number)
{
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(number, &action, nullptr);
    raise(number);
}

void endHungProcess(int /*alarm*/)
{
    // Any thread may run this, so the signal goes to the process.
    struct sigaction action = {};
    action.sa_handler = SIG_DFL;
    sigaction(capture->fatalSignal, &action, nullptr);
    kill(getpid(), capture->fatalSignal);
}

/// Ends the process if its report hangs. The handler blocks no other signal, so that fatal ones still arrive.
void startTimeout()
{
    struct sigaction action = {};
    action.sa_handler = &endHungProcess;
    sigaction(SIGALRM, &action, nullptr);
    sigset_t alarmSignal = {};
    sigemptyset(&alarmSignal);
    sigaddset(&alarmSignal, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarmSignal, nullptr);
    alarm(reportTimeoutSeconds);
}

/// Makes the current thread the one that reports, and returns how often it has called this. Any other
/// crashing thread waits here until the process ends.
int takeTurn(int number)
{
    pid_t expected = 0;
    const pid_t self = currentThread();
    if (capture->reportingThread.compare_exchange_strong(expected, self)) {
        capture->fatalSignal = number;
        startTimeout();
    } else if (expected != self) {
        for (;;)
            pause();
    }
    return ++capture->attempts;
}

void handleSignal(int number, siginfo_t *information, void *context)
{
    if (!isOwnProcess()) {
        endWithSignal(number);
        return;
    }
    const int attempt = takeTurn(number);
    if (!capture->isWritten && attempt == 1) {
        capture->stack.captureInterrupted(*static_cast<ucontext_t *>(context), *information);
        capture->persistSignal(number);
    } else if (!capture->isWritten && attempt == 2) {
        // The stack is so damaged that unwinding it crashed, but the frames up to there are known.
        capture->persistSignal(capture->fatalSignal);
    }
    endWithSignal(capture->fatalSignal);
}

[[noreturn]] void handleTerminate()
{
    if (isOwnProcess()) {
        takeTurn(SIGABRT);
        capture->persistException();
        capture->isWritten = true;
    }
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
