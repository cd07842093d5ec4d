// SPDX-License-Identifier: GPL-3.0-or-later
#include "TestProgram.h"

#include <cstdio>
#include <map>
#include <string>

namespace {

/// Static in a function, because static objects of other files use it before this file's are initialized.
std::map<std::string, TestProgram::Run> &classes()
{
    static std::map<std::string, TestProgram::Run> known;
    return known;
}

} // namespace

TestProgram::Registration::Registration(const char *name, Run run)
{
    classes().emplace(name, run);
}

int main(int argc, char **argv)
{
    const auto chosen = argc > 1 ? classes().find(argv[1]) : classes().end();
    if (chosen == classes().end()) {
        for (const auto &[name, run] : classes())
            std::puts(name.c_str());
        return 2;
    }
    argv[1] = argv[0];
    return chosen->second(argc - 1, argv + 1);
}
