// SPDX-License-Identifier: BSD-3-Clause
// A shared library, opened as long as the object lives.
#pragma once

#include <string>

namespace ipmib::host
{

class SharedLibrary
{
  public:
    enum class Symbols { local, global };

    // Every symbol is bound at once, so that a missing one is an error here; a library that was built for another
    // contract is refused before anything of it runs. Throws PluginError.
    SharedLibrary(std::string path, Symbols symbols);
    ~SharedLibrary();
    SharedLibrary(const SharedLibrary &) = delete;
    SharedLibrary &operator=(const SharedLibrary &) = delete;

    const std::string &path() const { return path_; }
    // The symbol's address in this library, or null.
    const void *find(const char *symbol) const;

  private:
    std::string path_;
    void *handle_;
};

} // namespace ipmib::host
