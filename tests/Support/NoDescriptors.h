// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "FileDescriptor.h"

#include <fcntl.h>
#include <sys/resource.h>

/// While an object lives, the process cannot open another file descriptor.
class NoDescriptors
{
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &m_old);
        const FileDescriptor next(open("/dev/null", O_RDONLY | O_CLOEXEC));
        const rlimit none = {static_cast<rlim_t>(next.get()), m_old.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_old); }
    NoDescriptors(const NoDescriptors &) = delete;
    NoDescriptors &operator=(const NoDescriptors &) = delete;

private:
    rlimit m_old = {};
};
