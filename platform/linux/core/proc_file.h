// SPDX-License-Identifier: BSD-3-Clause
// A file of /proc that is read again and again: opened once, in the network namespace of the start, and then a single
// system call a reading.
#pragma once

#include "core/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace ipmib::platform
{

class ProcFile
{
  public:
    // The path must outlive the file.
    explicit ProcFile(const char *path) : path_(path) {}

    // Tries again to open a file that was not there.
    bool open();
    void close() { fd_.reset(); }
    // The whole content, as far as it fits; empty when the file cannot be read.
    std::string_view read(char *buffer, std::size_t capacity);
    // The content as one decimal number.
    std::optional<std::uint32_t> readNumber();

  private:
    const char *path_;
    Descriptor fd_;
};

} // namespace ipmib::platform
