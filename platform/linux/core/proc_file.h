// SPDX-License-Identifier: BSD-3-Clause
// A file of /proc that is read again and again: opened once, in the network namespace of the start, and then a single
// system call a reading.
#pragma once

#include "core/descriptor.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ipmib::platform
{

class ProcFile
{
  public:
    // The path must outlive the file.
    explicit ProcFile(const char *path) : path_(path) {}

    // Tries again to open a file that could not be opened.
    bool open();
    // There is no such file: this kernel has nothing to tell there. Any other reason not to open it, such as too many
    // open files, says nothing of the kind.
    bool isAbsent() { return !open() && error_ == ENOENT; }
    // The errno of the last attempt to open it; 0 when it is open.
    int error() const { return error_; }
    void close() { fd_.reset(); }
    // The whole content, as far as it fits; empty when the file cannot be read.
    std::string_view read(char *buffer, std::size_t capacity);
    // The whole content of a file of any length; false when it cannot be read.
    bool readAll(std::string &content);
    // The content as one decimal number: the last one while the file cannot be read, nothing when there is no such
    // file.
    std::optional<std::uint32_t> readNumber();

  private:
    const char *path_;
    Descriptor fd_;
    int error_ = 0;
    std::optional<std::uint32_t> number_; // as last read
};

} // namespace ipmib::platform
