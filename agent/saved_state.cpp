// SPDX-License-Identifier: BSD-3-Clause
// The library itself moves the old file away, appends line after line to a new one without a look at what comes of it,
// and removes the old one.

#include "saved_state.h"

#include "locked_file.h"
#include "net_snmp.h"
#include "snmp_library.h"

#include "support/named_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace ipmib::agent
{

namespace
{

namespace fs = std::filesystem;

// The library's own place is shared with snmpd, whose user is another one.
constexpr const char *usualFolder = "/var/lib/ipmibd";

constexpr std::size_t largestState = 16 << 20;
// More than any number of users needs. It is there before the library writes, which does not notice a lack of it.
constexpr off_t reservedMemory = 1 << 20;

constexpr std::string_view firstLine =
    "# Kept by ipmibd: its SNMPv3 users, with their keys, and the count of its starts.\n";
constexpr std::string_view secondLine = "# What is changed here while it runs is lost.\n";
constexpr std::string_view lastLine = "# This was all.\n";

// The folders in which the library is to look for configuration, with this one at the end.
std::string searchPathTo(const fs::path &last)
{
    const char *const named = std::getenv("SNMPCONFPATH");
    std::string path;
    std::istringstream folders(named != nullptr ? named : get_configuration_directory());
    for (std::string folder; std::getline(folders, folder, ENV_SEPARATOR_CHAR);) {
        std::error_code error;
        if (!fs::equivalent(folder, last, error)) {
            path += folder + ENV_SEPARATOR_CHAR;
        }
    }
    return path + last.string();
}

[[noreturn]] void fail()
{
    throw std::system_error(errno, std::generic_category());
}

void sync(int descriptor)
{
    if (fsync(descriptor) != 0 && errno != EINVAL) { // some file systems cannot do it for a folder
        fail();
    }
}

// Why a file cannot be what was written last, or null. Lines may have been added while nobody ran.
const char *damageOf(std::string_view text)
{
    if (text.empty()) {
        return "is empty";
    }
    if (text.find('\0') != std::string_view::npos) {
        return "is damaged";
    }
    return text.starts_with(firstLine) && text.find(lastLine) == std::string_view::npos ? "is not whole" : nullptr;
}

class Folder
{
  public:
    explicit Folder(const std::string &path) : descriptor_(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        if (descriptor_ < 0) {
            fail();
        }
    }
    ~Folder() { close(descriptor_); }
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    // Started once by root, the service must still be able to read its file.
    void giveToOwner(int file) const
    {
        struct stat status {
        };
        if (geteuid() == 0 && (fstat(descriptor_, &status) != 0 || fchown(file, status.st_uid, status.st_gid) != 0)) {
            fail();
        }
    }
    void sync() const { agent::sync(descriptor_); }

  private:
    int descriptor_;
};

void replaceFile(const std::string &path, std::string_view content)
{
    mkdirhier(path.c_str(), S_IRWXU, 1); // the folders above it; what goes wrong shows at once
    const Folder folder(fs::path(path).parent_path());
    const LockedFile scratch(path + ".new", S_IRUSR | S_IWUSR);
    try {
        folder.giveToOwner(scratch.descriptor());
        scratch.replaceContent(content);
        sync(scratch.descriptor());
        if (rename(scratch.path().c_str(), path.c_str()) != 0) {
            fail();
        }
    } catch (const std::system_error &) {
        unlink(scratch.path().c_str());
        throw;
    }
    folder.sync();
}

} // namespace

SavedState::SavedState(bool isKept) : isKept_(isKept)
{
    setenv("SNMP_PERSISTENT_DIR", usualFolder, 0);
    // The second of them also keeps the library from writing, in spite of its name, and not from reading.
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, isKept ? 0 : 1);
    if (!isKept) {
        return;
    }
    memory_ = memfd_create("state", MFD_CLOEXEC);
    if (memory_ < 0) {
        fail();
    }
    setenv("SNMP_PERSISTENT_FILE", ("/proc/self/fd/" + std::to_string(memory_)).c_str(), 1);
    // Fixed here, whatever its configuration says of it later: what was read is what is written.
    const fs::path folder = fs::absolute(get_persistent_directory());
    path_ = folder / (std::string(SnmpLibrary::applicationName) + ".conf");
    setenv("SNMPCONFPATH", searchPathTo(folder).c_str(), 1);
}

SavedState::~SavedState()
{
    if (memory_ >= 0) {
        close(memory_);
    }
}

void SavedState::begin()
{
    if (!isKept_) {
        return;
    }
    const support::NamedFile before = support::readNamedFile(path_, largestState);
    if (before.error != 0 && before.error != ENOENT) {
        snmp_log(LOG_ERR, "cannot read %s: %s; no state is kept, and SNMPv3 users of earlier runs are not known\n",
                 path_.c_str(), before.reason.c_str());
        return;
    }
    if (const char *damage = before.error == 0 ? damageOf(before.text) : nullptr; damage != nullptr) {
        snmp_log(LOG_ERR, "%s %s; SNMPv3 users of earlier runs may be missing\n", path_.c_str(), damage);
    }
    isKnown_ = true;
    save();
}

void SavedState::save() const
{
    if (!isKnown_) {
        return;
    }
    try {
        const std::string content = whatTheLibraryKeeps();
        if (support::readNamedFile(path_, largestState).text != content) {
            replaceFile(path_, content);
        }
        for (int number = 0; number <= NETSNMP_MAX_PERSISTENT_BACKUPS; ++number) {
            // What an interrupted write of the library has left; it reads these, too.
            unlink(fs::path(path_).replace_extension(std::to_string(number) + ".conf").c_str());
        }
    } catch (const std::runtime_error &error) {
        snmp_log(LOG_ERR, "cannot write %s: %s; it stays as it was\n", path_.c_str(), error.what());
    }
}

std::string SavedState::whatTheLibraryKeeps() const
{
    if (ftruncate(memory_, 0) != 0 || fallocate(memory_, FALLOC_FL_KEEP_SIZE, 0, reservedMemory) != 0) {
        fail();
    }
    snmp_call_callbacks(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_STORE_DATA, nullptr);
    const support::NamedFile kept = support::readNamedFile("/proc/self/fd/" + std::to_string(memory_), largestState);
    if (kept.text.find("engineBoots ") == std::string::npos) {
        throw std::runtime_error("the library says nothing");
    }
    return std::string(firstLine).append(secondLine).append(kept.text).append(lastLine);
}

} // namespace ipmib::agent
