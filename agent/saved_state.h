// SPDX-License-Identifier: BSD-3-Clause
// The file in which the library keeps SNMPv3 users, with their keys, and the count of starts.
#pragma once

#include <string>

namespace ipmib::agent
{

// The library writes into memory; the file itself is replaced as a whole, or not at all.
class SavedState
{
  public:
    // From here on the library writes nothing into the file system. With `isKept` it is to read the file as the last
    // part of its configuration; without, nothing is read or written. Throws std::system_error.
    explicit SavedState(bool isKept);
    ~SavedState();
    SavedState(const SavedState &) = delete;
    SavedState &operator=(const SavedState &) = delete;

    // To be called when the library has read its configuration for the first time: logs when the file is not what was
    // written last, and keeps hands off from then on when it cannot be read. Then saves.
    void begin();
    // Puts what the library knows now into the file, unless it never got to know what is there. When that fails, it is
    // logged, and the file stays as it was.
    void save() const;

  private:
    std::string whatTheLibraryKeeps() const;

    bool isKept_;
    std::string path_;
    bool isKnown_ = false; // what is in the file
    int memory_ = -1;
};

} // namespace ipmib::agent
