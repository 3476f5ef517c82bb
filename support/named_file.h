// SPDX-License-Identifier: BSD-3-Clause
// Files that a person names, on a command line or in a configuration. The name may lead to anything.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace ipmib::support
{

struct NamedFile {
    std::string text;
    int error = 0;      // errno; 0 when the text is all of the file
    std::string reason; // the error in words, "No such file or directory"
};

// Reads a regular file of at most `limit` bytes. /dev/null is an empty file, since that is how people say "none". A
// pipe is read when it is given some patience: so many milliseconds to say everything. Whatever else there is, devices
// and directories for instance, is an error, so that reading ends with every name, and without patience never waits.
NamedFile readNamedFile(const std::string &path, std::size_t limit, std::chrono::milliseconds pipePatience = {});

} // namespace ipmib::support
