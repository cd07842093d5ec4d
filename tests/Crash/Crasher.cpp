// SPDX-License-Identifier: GPL-3.0-or-later
#include "CrashCapture.h"
#include "Crashes.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <cstring>
#include <filesystem>

namespace {

void limit(__rlimit_resource resource, rlim_t value)
{
    const rlimit limits = {value, value};
    setrlimit(resource, &limits);
}

} // namespace

/// usage: Crasher REPORT KIND [full-disk | no-descriptors | no-folder]: crashes in the given way, under the
/// given shortage.
int main(int argc, char **argv)
{
    if (argc < 3)
        return 2;
    limit(RLIMIT_CORE, 0);
    CrashCapture::install(argv[1]);
    if (argc > 3 && std::strcmp(argv[3], "full-disk") == 0)
        limit(RLIMIT_FSIZE, 40);
    if (argc > 3 && std::strcmp(argv[3], "no-descriptors") == 0) {
        while (open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0) {
        }
    }
    if (argc > 3 && std::strcmp(argv[3], "no-folder") == 0)
        std::filesystem::remove_all(std::filesystem::path(argv[1]).parent_path().parent_path());
    crash(argv[2]);
    return 0;
}
