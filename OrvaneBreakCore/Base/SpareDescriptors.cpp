// SPDX-License-Identifier: GPL-3.0-or-later
#include "SpareDescriptors.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <array>

namespace {

/// An event loop, the certificates, connections over IPv4 and IPv6, and a few more.
constexpr std::size_t descriptorsPerThread = 24;

} // namespace

FileDescriptor SpareDescriptors::make()
{
    return FileDescriptor(eventfd(0, EFD_CLOEXEC));
}

bool SpareDescriptors::sufficeForThread()
{
    std::array<FileDescriptor, descriptorsPerThread> descriptors;
    return std::all_of(descriptors.begin(), descriptors.end(), [](FileDescriptor &descriptor) {
        descriptor = make();
        return descriptor.isOpen();
    });
}
