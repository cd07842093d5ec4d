// SPDX-License-Identifier: GPL-3.0-or-later
#include "TextFile.h"

#include "FileDescriptor.h"

#include <QFile>
#include <QStringDecoder>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

std::optional<FileText> readText(const std::filesystem::path &path, qint64 maxSize)
{
    // Without O_NONBLOCK, opening a FIFO waits for a writer.
    const FileDescriptor descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!descriptor.isOpen() || fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    QFile file;
    if (!file.open(descriptor.get(), QIODevice::ReadOnly))
        return std::nullopt;
    // Allocates for the file's size, because `maxSize` is far larger than most files.
    const QByteArray bytes = file.read(std::min(maxSize, qint64{status.st_size}));
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    QStringConverter::Flags flags = QStringConverter::Flag::ConvertInitialBom;
    // With a state, the decoder waits for the rest of an incomplete last character, which does not come.
    if (status.st_size <= maxSize)
        flags |= QStringConverter::Flag::Stateless;
    QStringDecoder decoder(QStringDecoder::Utf8, flags);
    const QString text = decoder.decode(bytes);
    return FileText{text, !decoder.hasError()};
}
