// SPDX-License-Identifier: GPL-3.0-or-later
#include "ReportFile.h"

#include "FileCalls.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <system_error>

namespace {

constexpr std::string_view separator = "\n---\n";

} // namespace

ReportFile::ReportFile(const std::filesystem::path &path)
    : m_path(path.string())
    , m_temporary(m_path + ".new")
    , m_reserve(open("/dev/null", O_RDONLY | O_CLOEXEC))
{
    std::error_code ignored;
    if (std::filesystem::create_directories(path.parent_path(), ignored))
        chmod(path.parent_path().c_str(), S_IRWXU);
}

void ReportFile::write(std::string_view message, std::string_view stack)
{
    // With a file size limit, SIGXFSZ would end the process.
    std::signal(SIGXFSZ, SIG_IGN);
    m_reserve = FileDescriptor();
    unlink(m_temporary.c_str());
    const FileDescriptor file(
        open(m_temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen())
        return;
    const bool isWhole =
        writeBytes(file.get(), message) && writeBytes(file.get(), separator) && writeBytes(file.get(), stack);
    if (!isWhole || rename(m_temporary.c_str(), m_path.c_str()) != 0)
        unlink(m_temporary.c_str());
}
