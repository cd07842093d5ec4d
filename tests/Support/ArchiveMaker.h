// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <archive.h>
#include <archive_entry.h>

#include <string>
#include <vector>

/// Packs archives, malicious ones too.
namespace ArchiveMaker {

struct Entry
{
    std::string path;
    QByteArray content;
    unsigned mode = 0644;
    unsigned type = AE_IFREG;
    std::string symbolicLink;
    std::string hardLink;
};

inline Entry file(const std::string &path, const QByteArray &content = "content", unsigned mode = 0644)
{
    return {path, content, mode, AE_IFREG, {}, {}};
}

inline Entry folder(const std::string &path, unsigned mode = 0755)
{
    return {path, {}, mode, AE_IFDIR, {}, {}};
}

inline Entry symbolic(const std::string &path, const std::string &target)
{
    return {path, {}, 0777, AE_IFLNK, target, {}};
}

inline Entry hardLink(const std::string &path, const std::string &target)
{
    return {path, {}, 0644, AE_IFREG, {}, target};
}

inline Entry special(const std::string &path, unsigned type)
{
    return {path, {}, 0644, type, {}, {}};
}

/// Functions of libarchive that add a compression filter and set the format.
using Filter = int (*)(archive *);
using Format = int (*)(archive *);

inline void check(int result)
{
    if (result != ARCHIVE_OK)
        qFatal("cannot make an archive for the test");
}

inline void write(archive *writer, const Entry &entry)
{
    archive_entry *header = archive_entry_new();
    archive_entry_set_pathname(header, entry.path.c_str());
    archive_entry_set_filetype(header, entry.type);
    archive_entry_set_perm(header, entry.mode);
    archive_entry_set_size(header, entry.content.size());
    if (!entry.symbolicLink.empty())
        archive_entry_set_symlink(header, entry.symbolicLink.c_str());
    if (!entry.hardLink.empty())
        archive_entry_set_hardlink(header, entry.hardLink.c_str());
    check(archive_write_header(writer, header));
    archive_write_data(writer, entry.content.constData(), static_cast<std::size_t>(entry.content.size()));
    archive_entry_free(header);
}

inline QByteArray packed(const std::vector<Entry> &entries,
                         const std::vector<Filter> &filters = {archive_write_add_filter_zstd},
                         Format format = archive_write_set_format_pax_restricted)
{
    QByteArray bytes;
    archive *writer = archive_write_new();
    check(format(writer));
    for (const Filter filter : filters)
        check(filter(writer));
    archive_write_set_bytes_in_last_block(writer, 1);
    const auto append = [](archive * /*writer*/, void *target, const void *buffer,
                           std::size_t length) -> la_ssize_t {
        static_cast<QByteArray *>(target)->append(static_cast<const char *>(buffer),
                                                  static_cast<qsizetype>(length));
        return static_cast<la_ssize_t>(length);
    };
    check(archive_write_open(writer, &bytes, nullptr, append, nullptr));
    for (const Entry &entry : entries)
        write(writer, entry);
    check(archive_write_close(writer));
    archive_write_free(writer);
    return bytes;
}

/// The bytes compressed with zstd, without an archive format.
inline QByteArray compressed(const QByteArray &bytes)
{
    return packed({file("data", bytes)}, {archive_write_add_filter_zstd}, archive_write_set_format_raw);
}

inline QByteArray information(const QByteArray &version)
{
    return R"({"CFBundleShortVersionString": ")" + version + "\"}";
}

/// The entries of a complete update. The content of every file includes the version.
inline std::vector<Entry> update(const std::string &version)
{
    const std::string top = "OrvaneBreak-" + version;
    const QByteArray text = QByteArray::fromStdString(version);
    return {folder(top + '/'),
            folder(top + "/bin/"),
            file(top + "/bin/orvanebreak", "#!/bin/sh " + text, 0755),
            file(top + "/bin/orvanebreak-program", "program " + text, 0755),
            file(top + "/lib/libQt6Core.so.6.4", "library " + text),
            symbolic(top + "/lib/libQt6Core.so.6", "libQt6Core.so.6.4"),
            file(top + "/share/OrvaneBreak/Info.json", information(text)),
            file(top + "/install", "install " + text, 0755),
            file(top + "/uninstall", "uninstall " + text, 0755)};
}

inline QByteArray packedUpdate(const std::string &version)
{
    return packed(update(version));
}

} // namespace ArchiveMaker
